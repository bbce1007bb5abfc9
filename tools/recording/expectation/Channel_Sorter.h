// Tools, recording library. Puts the samples of frames to their channels, by the counter that each frame
// carries. Channels whose frames are missing keep their last value.
#pragma once

#include "stream_format/Frame_Cursor.h"

#include <array>

namespace Pelgar::ORBE::recording {

using Channel_Values = std::array<std::uint16_t, channel_count>;

class Channel_Sorter {
public:
    // What a frame completes.
    enum class Result : std::uint8_t { nothing, ap_sample, lfp_sample };

    Result sort(Frame frame);

    const Channel_Values& ap() const { return m_ap; }

    const Channel_Values& lfp() const { return m_lfp; }

private:
    // The frame counter, extended from 20 to 32 bits.
    std::uint32_t extended_counter(Frame frame);

    Channel_Values m_ap{};
    Channel_Values m_lfp{};
    std::uint32_t m_wraps = 0;
    std::uint16_t m_previous_high = 0;
};

} // namespace Pelgar::ORBE::recording
