// Tools, recording library. Turns the channels of one port into the super frames that the probe sends:
// channels to ADCs and frames, frames to lanes and rows, tags, start flag and frame counters. Runs on the
// generator's thread.
#pragma once

#include "signals/Channel_Signal.h"

#include <array>

namespace Pelgar::ORBE::recording {

class Super_Frame_Generator {
public:
    explicit Super_Frame_Generator(Channel_Signal signal);

    // The 455 words of the next super frame in the order in which they are sent; valid until the next call.
    const std::array<std::uint16_t, words_per_super_frame>& next();

private:
    Channel_Signal m_signal;
    std::uint64_t m_super_frame = 0;
    std::array<std::uint16_t, channel_count> m_ap{};
    std::array<std::uint16_t, channel_count> m_lfp{};
    std::array<std::uint16_t, words_per_super_frame> m_words{};
};

} // namespace Pelgar::ORBE::recording
