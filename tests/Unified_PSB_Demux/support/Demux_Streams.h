// Test support: puts together what the box sends, at every level of the data path.
#pragma once

#include "Recording_Listeners.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace Pelgar::ORBE::demux {

class Async_NP_And_RHD_Demux;

} // namespace Pelgar::ORBE::demux

namespace Pelgar::ORBE::test {

using Bytes = std::vector<std::uint8_t>;
using Words = std::vector<std::uint16_t>;
using Row_Payload = std::array<std::uint16_t, 7>;

void append_words(Bytes& bytes, std::span<const std::uint16_t> words);

// One 16-byte row of the DMA stream.
void append_row(Bytes& bytes, unsigned stream_id, unsigned counter, const Row_Payload& payload);

// Rows whose counters run on from one row of a stream to the next, from 0.
class Row_Counters {
public:
    void append(Bytes& bytes, unsigned stream_id, const Row_Payload& payload) {
        append_row(bytes, stream_id, m_next[stream_id]++, payload);
    }

    void skip(unsigned stream_id, unsigned rows) {
        m_next[stream_id] = static_cast<std::uint8_t>(m_next[stream_id] + rows);
    }

private:
    std::array<std::uint8_t, 16> m_next{};
};

// A probe's ADC frame with the frame counter in its place and the values 0 elsewhere.
Adc_Frame frame_with_counter(std::uint32_t counter);

// A frame whose 32 samples depend on the counter and the ADC.
Adc_Frame numbered_frame(std::uint32_t counter);

// The 35 words of a frame as the five rows of seven lanes that carry it.
Words psb_words(const Adc_Frame& frame, bool starts_super_frame);

// Super frames of numbered frames, from frame counter `first` on, which begins a super frame.
Bytes numbered_super_frames(std::uint32_t first, std::size_t super_frame_count);

// Cuts words into row payloads; the words of the last row are filled up with zeros.
std::vector<Row_Payload> row_payloads(std::span<const std::uint16_t> words);
std::vector<Row_Payload> row_payloads(const Bytes& bytes);

// An RHD frame of `stream_count` streams, filled from a seed, and its words on the wire.
Rhd_Frame_Copy numbered_rhd_frame(std::uint32_t seed, std::size_t stream_count);
Words rhd_words(const Rhd_Frame_Copy& frame, std::size_t stream_count);

// Pushes the bytes as one transfer buffer.
void push_bytes(demux::Async_NP_And_RHD_Demux& demux, std::span<const std::uint8_t> bytes);

// Pushes them as as many full transfer buffers as they make.
void push_in_full_buffers(demux::Async_NP_And_RHD_Demux& demux, std::span<const std::uint8_t> bytes);

} // namespace Pelgar::ORBE::test
