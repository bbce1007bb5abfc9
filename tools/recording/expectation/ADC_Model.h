// Tools, recording library. What the library makes of the RHD part of the stream: fed with the pieces of a
// recording, it gives the ADC packets that a host receives, in order. Holds the words of one piece.
#pragma once

#include "stream_format/Wire_Format.h"

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace Pelgar::ORBE::recording {

struct ADC_Packet {
    std::array<std::int16_t, 12> samples{}; // eight ADC inputs, four zeros
    std::uint16_t status = 0;

    bool operator==(const ADC_Packet&) const = default;
};

class ADC_Model {
public:
    // `streams` is the number of data streams that the library takes for enabled: 0 for every host of the
    // API.
    explicit ADC_Model(unsigned streams = 0);

    // Takes the next piece of the stream. All packets that were due must have been taken.
    void feed(std::span<const std::uint8_t> piece);

    // The next packet, valid until the next call; null when the next piece is needed.
    const ADC_Packet* next();

private:
    std::uint32_t wide(std::size_t position) const;
    bool magic_at(std::size_t position) const;
    void convert(std::size_t position);

    std::size_t m_streams;
    std::vector<std::uint16_t> m_words;
    std::size_t m_position = 0;
    std::uint16_t m_last_ttl = 0;
    ADC_Packet m_packet;
};

} // namespace Pelgar::ORBE::recording
