#include "Demux_Streams.h"

#include "rows/C_Async_PSB_And_RHD_Demux.h"

#include <algorithm>
#include <memory>
#include <stdexcept>

namespace Pelgar::ORBE::test {

void append_words(Bytes& bytes, std::span<const std::uint16_t> words) {
    for (const std::uint16_t word : words) {
        bytes.push_back(static_cast<std::uint8_t>(word & 0xFF));
        bytes.push_back(static_cast<std::uint8_t>(word >> 8));
    }
}

void append_row(Bytes& bytes, unsigned stream_id, unsigned counter, const Row_Payload& payload) {
    bytes.push_back(static_cast<std::uint8_t>(0xD0U | stream_id));
    bytes.push_back(static_cast<std::uint8_t>(counter));
    append_words(bytes, payload);
}

Adc_Frame frame_with_counter(std::uint32_t counter) {
    Adc_Frame frame{};
    frame[33] = static_cast<std::uint16_t>((counter >> 10) & 0x3FF);
    frame[34] = static_cast<std::uint16_t>(counter & 0x3FF);
    return frame;
}

Adc_Frame numbered_frame(std::uint32_t counter) {
    Adc_Frame frame = frame_with_counter(counter);
    for (std::size_t adc = 0; adc < 32; ++adc) {
        frame[adc] = static_cast<std::uint16_t>((counter * 31 + adc * 7 + 1) & 0x3FF);
    }
    return frame;
}

Words psb_words(const Adc_Frame& frame, bool starts_super_frame) {
    Words words;
    for (unsigned row = 0; row < 5; ++row) {
        for (unsigned lane = 0; lane < 7; ++lane) {
            words.push_back(static_cast<std::uint16_t>((lane + 1) << 12 | (frame[5 * lane + row] & 0x3FF)));
        }
    }
    if (starts_super_frame) {
        words.front() |= 0x0800;
    }
    return words;
}

Bytes numbered_super_frames(std::uint32_t first, std::size_t super_frame_count) {
    Bytes bytes;
    bytes.reserve(910 * super_frame_count);
    for (std::uint32_t frame = 0; frame < 13 * super_frame_count; ++frame) {
        append_words(bytes, psb_words(numbered_frame(first + frame), frame % 13 == 0));
    }
    return bytes;
}

std::vector<Row_Payload> row_payloads(std::span<const std::uint16_t> words) {
    std::vector<Row_Payload> payloads((words.size() + 6) / 7);
    for (std::size_t i = 0; i < words.size(); ++i) {
        payloads[i / 7][i % 7] = words[i];
    }
    return payloads;
}

std::vector<Row_Payload> row_payloads(const Bytes& bytes) {
    Words words(bytes.size() / 2);
    for (std::size_t i = 0; i < words.size(); ++i) {
        words[i] = static_cast<std::uint16_t>(bytes[2 * i] | bytes[2 * i + 1] << 8);
    }
    return row_payloads(words);
}

Rhd_Frame_Copy numbered_rhd_frame(std::uint32_t seed, std::size_t stream_count) {
    Rhd_Frame_Copy frame;
    frame.preamble = 0xD7A22AAA38132A53;
    frame.timestamp = seed * 0x10003U + 5;
    frame.amplifier_data.resize(32);
    for (std::size_t stream = 0; stream < std::min<std::size_t>(stream_count, 32); ++stream) {
        auto& samples = frame.amplifier_data[stream].emplace();
        for (std::size_t position = 0; position < samples.size(); ++position) {
            samples[position] = static_cast<std::uint16_t>(seed * 1000 + stream * 40 + position + 1);
        }
    }
    for (std::size_t i = 0; i < frame.board_adc_data.size(); ++i) {
        frame.board_adc_data[i] = static_cast<std::uint16_t>(seed * 8 + i + 0x4000);
    }
    frame.ttl_in = seed * 0x20001U + 3;
    frame.ttl_out = ~frame.ttl_in;
    return frame;
}

Words rhd_words(const Rhd_Frame_Copy& frame, std::size_t stream_count) {
    Words words;
    const auto append = [&words](std::uint64_t value, unsigned word_count) {
        for (unsigned i = 0; i < word_count; ++i) {
            words.push_back(static_cast<std::uint16_t>(value >> (16 * i)));
        }
    };
    append(frame.preamble, 4);
    append(frame.timestamp, 2);
    for (std::size_t position = 0; position < 35; ++position) {
        for (std::size_t stream = 0; stream < stream_count; ++stream) {
            append(stream < 32 ? (*frame.amplifier_data[stream])[position] : 0xEEEE, 1);
        }
    }
    words.insert(words.end(), stream_count % 4, 0xF111);
    append(0xABCDABCD, 2);
    for (const std::uint16_t value : frame.board_adc_data) {
        append(value, 1);
    }
    append(frame.ttl_in, 2);
    append(frame.ttl_out, 2);
    return words;
}

void push_bytes(demux::Async_NP_And_RHD_Demux& demux, std::span<const std::uint8_t> bytes) {
    if (bytes.size() > demux::transfer_buffer_capacity) {
        throw std::length_error("more than a transfer buffer holds");
    }
    const auto buffer = std::make_unique<demux::Main_mux_transfer_buffer_wrapper>();
    std::copy(bytes.begin(), bytes.end(), buffer->data);
    buffer->size = static_cast<std::uint32_t>(bytes.size());
    demux.push_xfer_buffer_to_queue(*buffer);
}

void push_in_full_buffers(demux::Async_NP_And_RHD_Demux& demux, std::span<const std::uint8_t> bytes) {
    while (!bytes.empty()) {
        const auto piece = bytes.first(std::min(bytes.size(), demux::transfer_buffer_capacity));
        push_bytes(demux, piece);
        bytes = bytes.subspan(piece.size());
    }
}

} // namespace Pelgar::ORBE::test
