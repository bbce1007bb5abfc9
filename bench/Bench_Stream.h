// Benchmarks: a stream of the box, made once in memory, that can be sent round and round without a jump in a
// row counter, and where in it the last byte of every packet lies.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Pelgar::ORBE::bench {

// Probe ports 1 to `ports`, and an RHD frame of `rhd_streams` data streams in every tick of 30 kHz.
struct Stream_Shape {
    unsigned ports;
    unsigned rhd_streams;
};

inline constexpr Stream_Shape full_box{4, 16};

// Four probe ports and 16 RHD data streams at 30 kHz: rows of 16 bytes, as they come out of the driver.
inline constexpr double full_box_bytes_per_second = 164.6e6;
inline constexpr double ticks_per_second = 30'000.0;

// Nine blocks of 1,792 super frames: whole packets of twelve super frames, and a multiple of 256 rows of
// every stream, so that the stream's end fits its beginning.
inline constexpr std::size_t blocks_per_round = 9;
inline constexpr std::size_t super_frames_per_round = blocks_per_round * 1792;
inline constexpr std::size_t packets_per_round = super_frames_per_round / 12;

class Bench_Stream {
public:
    explicit Bench_Stream(Stream_Shape shape);

    const Stream_Shape& shape() const { return m_shape; }

    const std::vector<std::uint8_t>& bytes() const { return m_bytes; }

    double bytes_per_second() const;

    // Copies `size` bytes from the endless stream's position `at`.
    void copy(std::uint64_t at, std::uint8_t* destination, std::size_t size) const;

    // Positions in the endless stream, counted from its beginning: behind the last row of the n-th packet,
    // and behind the row that lets the packet's block go to its worker.
    std::uint64_t packet_end(unsigned port, std::uint64_t packet) const;
    std::uint64_t packet_release(unsigned port, std::uint64_t packet) const;
    // Behind the last row of the n-th RHD frame.
    std::uint64_t frame_end(std::uint64_t frame) const;
    // RHD frames that are complete before the position.
    std::uint64_t frames_before(std::uint64_t at) const;
    // Ticks that are complete before the position, to a tick.
    std::uint64_t ticks_before(std::uint64_t at) const;

private:
    struct Port {
        std::vector<std::uint64_t> packet_ends;
        std::vector<std::uint64_t> block_begins; // behind the first row of each block
    };

    void find_positions();

    Stream_Shape m_shape;
    std::vector<std::uint8_t> m_bytes;
    std::vector<Port> m_ports;
    std::vector<std::uint64_t> m_frame_ends;
};

} // namespace Pelgar::ORBE::bench
