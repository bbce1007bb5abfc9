// Tools, recording library. What a probe in digital test mode sends: a fixed bit pattern on all channels,
// which the PSB self test looks for.
#pragma once

#include "signals/A_Signal.h"

namespace Pelgar::ORBE::recording {

class Pattern_Signal : public A_Signal {
public:
    static constexpr std::uint16_t even_channel = 0x155;
    static constexpr std::uint16_t odd_channel = 0x2AA;

    void fill(Band /*band*/, std::uint64_t /*sample*/, std::span<const std::uint16_t> channels,
              std::span<std::uint16_t, channel_count> values) override {
        for (const std::uint16_t channel : channels) {
            values[channel] = channel % 2 == 0 ? even_channel : odd_channel;
        }
    }
};

} // namespace Pelgar::ORBE::recording
