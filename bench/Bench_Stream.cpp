#include "Bench_Stream.h"

#include "generator/Recording_Generator.h"
#include "stream_format/Wire_Format.h"

#include <algorithm>
#include <cstring>

namespace Pelgar::ORBE::bench {

namespace {

namespace wire = recording;

std::vector<std::uint8_t> make_bytes(Stream_Shape shape) {
    recording::Recording_Options options;
    options.super_frames = super_frames_per_round;
    options.ports.clear();
    for (unsigned port = 1; port <= shape.ports; ++port) {
        options.ports.push_back(port);
    }
    options.rhd_streams = shape.rhd_streams;
    return recording::make_recording(options);
}

} // namespace

Bench_Stream::Bench_Stream(Stream_Shape shape)
    : m_shape(shape), m_bytes(make_bytes(shape)), m_ports(shape.ports) {
    find_positions();
}

double Bench_Stream::bytes_per_second() const {
    return static_cast<double>(m_bytes.size()) / super_frames_per_round * ticks_per_second;
}

void Bench_Stream::copy(std::uint64_t at, std::uint8_t* destination, std::size_t size) const {
    while (size != 0) {
        const auto offset = static_cast<std::size_t>(at % m_bytes.size());
        const std::size_t run = std::min(size, m_bytes.size() - offset);
        std::memcpy(destination, m_bytes.data() + offset, run);
        at += run;
        destination += run;
        size -= run;
    }
}

std::uint64_t Bench_Stream::packet_end(unsigned port, std::uint64_t packet) const {
    return packet / packets_per_round * m_bytes.size() +
           m_ports[port].packet_ends[packet % packets_per_round];
}

std::uint64_t Bench_Stream::packet_release(unsigned port, std::uint64_t packet) const {
    const std::uint64_t next_block = (packet * 12 + 11) / wire::super_frames_per_block + 1;
    return next_block / blocks_per_round * m_bytes.size() +
           m_ports[port].block_begins[next_block % blocks_per_round];
}

std::uint64_t Bench_Stream::frame_end(std::uint64_t frame) const {
    return frame / super_frames_per_round * m_bytes.size() + m_frame_ends[frame % super_frames_per_round];
}

std::uint64_t Bench_Stream::frames_before(std::uint64_t at) const {
    const auto in_round = std::upper_bound(m_frame_ends.begin(), m_frame_ends.end(), at % m_bytes.size());
    return at / m_bytes.size() * super_frames_per_round +
           static_cast<std::uint64_t>(in_round - m_frame_ends.begin());
}

std::uint64_t Bench_Stream::ticks_before(std::uint64_t at) const {
    return static_cast<std::uint64_t>(static_cast<double>(at) / static_cast<double>(m_bytes.size()) *
                                      super_frames_per_round);
}

// A packet is closed by the LFP frame that begins its twelfth super frame.
void Bench_Stream::find_positions() {
    constexpr std::size_t rows_to_close = 11 * wire::rows_per_super_frame + wire::rows_per_frame;
    std::vector<std::uint64_t> rows(m_ports.size());
    std::uint64_t rhd_rows = 0;
    const std::size_t frame_words = wire::rhd_frame_words(m_shape.rhd_streams);
    for (std::size_t at = 0; at < m_bytes.size(); at += wire::row_bytes) {
        const unsigned stream = m_bytes[at] & wire::row_stream_mask;
        const std::uint64_t end = at + wire::row_bytes;
        if (stream < m_ports.size()) {
            const std::uint64_t row = rows[stream]++;
            if (row % (12 * wire::rows_per_super_frame) == rows_to_close - 1) {
                m_ports[stream].packet_ends.push_back(end);
            }
            if (row % wire::rows_per_block == 0) {
                m_ports[stream].block_begins.push_back(end);
            }
        } else if (stream == wire::rhd_stream) {
            ++rhd_rows;
            while ((m_frame_ends.size() + 1) * frame_words <= rhd_rows * wire::row_words) {
                m_frame_ends.push_back(end);
            }
        }
    }
}

} // namespace Pelgar::ORBE::bench
