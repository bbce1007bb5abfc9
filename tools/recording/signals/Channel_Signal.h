// Tools, recording library. All channels of one port: asks each signal for the channels that carry it.
#pragma once

#include "signals/A_Signal.h"
#include "signals/Signal_Choice.h"

#include <memory>
#include <vector>

namespace Pelgar::ORBE::recording {

class Channel_Signal {
public:
    // A later choice takes a channel from an earlier one; channels that none names carry noise. Port numbers
    // are 1..4; the tone's frequency is in Hz.
    Channel_Signal(const std::vector<Signal_Choice>& choices, double tone_frequency, unsigned port,
                   std::uint64_t seed);

    // All 384 values of one sample of the band.
    void fill(Band band, std::uint64_t sample, std::span<std::uint16_t, channel_count> values);

private:
    struct Part {
        std::unique_ptr<A_Signal> signal;
        std::vector<std::uint16_t> channels;
    };

    std::vector<Part> m_parts;
};

} // namespace Pelgar::ORBE::recording
