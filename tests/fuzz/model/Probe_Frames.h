// Road model: how a port's bytes make frames, which both ways of using them share.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace Pelgar::ORBE::road_model {

inline constexpr std::size_t frame_length = 70;
inline constexpr std::size_t frames_per_super_frame = 13;
inline constexpr std::size_t super_frame_length = frame_length * frames_per_super_frame;

// 35 values: those of the 32 ADCs, one without a use, and the halves of a counter.
struct Probe_Frame {
    std::array<std::uint16_t, 35> values{};
    unsigned wrong_tags = 0;

    std::uint32_t counter() const { return values[33] * 1024U + values[34]; }
};

// Of the 70 bytes of a frame.
Probe_Frame read_frame(const std::uint8_t* bytes);

bool begins_super_frame(const std::uint8_t* super_frame);

// The channel of an ADC in a slot.
unsigned channel_of(unsigned adc, unsigned slot);

} // namespace Pelgar::ORBE::road_model
