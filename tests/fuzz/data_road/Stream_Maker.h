// Fuzzing: puts the box's stream together in a transfer, and damages it. What it makes by itself is in order:
// counters run on, and every sample depends on its port, frame and ADC.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace Pelgar::ORBE::test {

using Bytes = std::vector<std::uint8_t>;

class Stream_Maker {
public:
    explicit Stream_Maker(unsigned rhd_streams) : m_rhd_streams(rhd_streams) {}

    // The transfer that is being made. Damage is done to it.
    Bytes transfer;

    // ---- What is appended.

    void append_row(unsigned id, std::span<const std::uint8_t> payload);
    void append_super_frames(unsigned port, unsigned count);
    // One super frame of each of the ports whose bits are set, row by row in turn, between rows of RHD frames
    // when bit 4 is set.
    void append_turns(unsigned streams);
    void append_rhd_frames(unsigned count);

    // ---- How the streams go on.

    void skip_rows(unsigned id, unsigned count) { m_row_counters[id] += static_cast<std::uint8_t>(count); }

    void skip_frames(unsigned port, unsigned count) { m_frames[port] += count; }

    void set_frame(unsigned port, std::uint32_t counter) { m_frames[port] = counter; }

    void skip_rhd_frames(std::uint32_t count) { m_rhd_stamp += count; }

    void set_rhd_stamp(std::uint32_t stamp) { m_rhd_stamp = stamp; }

    void set_ttl(std::uint32_t ttl) { m_ttl = ttl; }

    // Of all eight inputs, but for a little that tells them apart.
    void set_adc(std::uint16_t level) { m_adc = level; }

    // ---- Damage to what the transfer holds so far; a place is taken by its remainder.

    void flip(std::size_t byte, std::uint8_t bits);
    void cut(std::size_t bytes);
    void leave_out_rows(std::size_t from_end, std::size_t count);
    void repeat_rows(std::size_t from_end, std::size_t count);
    void exchange_rows(std::size_t from_end, std::size_t distance);
    // Byte `byte` of a row that is so many rows from the end.
    void set_byte(std::size_t from_end, std::size_t byte, std::uint8_t value);

private:
    using Row_Payload = std::array<std::uint8_t, 14>;

    std::vector<Row_Payload> super_frame(unsigned port);
    void add_rhd_frame();
    bool append_rhd_row();

    std::size_t row_count() const { return transfer.size() / 16; }

    unsigned m_rhd_streams;
    std::array<std::uint8_t, 16> m_row_counters{};
    std::array<std::uint32_t, 4> m_frames{};
    std::uint32_t m_rhd_stamp = 0;
    std::uint32_t m_ttl = 0;
    std::uint16_t m_adc = 0x8000;
    Bytes m_rhd_bytes; // that do not fill a row yet
};

} // namespace Pelgar::ORBE::test
