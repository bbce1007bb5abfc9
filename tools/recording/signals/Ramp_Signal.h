// Tools, recording library. A saw tooth through all ten-bit values, one count a sample, shifted by the
// channel number and by 256 counts from port to port: a lost sample or a wrong channel is plain to see.
#pragma once

#include "signals/A_Signal.h"

namespace Pelgar::ORBE::recording {

class Ramp_Signal : public A_Signal {
public:
    explicit Ramp_Signal(unsigned port) : m_offset(256 * (port - 1)) {}

    void fill(Band /*band*/, std::uint64_t sample, std::span<const std::uint16_t> channels,
              std::span<std::uint16_t, channel_count> values) override {
        for (const std::uint16_t channel : channels) {
            values[channel] = static_cast<std::uint16_t>((sample + channel + m_offset) & sample_mask);
        }
    }

private:
    std::uint64_t m_offset;
};

} // namespace Pelgar::ORBE::recording
