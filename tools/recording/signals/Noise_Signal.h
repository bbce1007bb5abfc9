// Tools, recording library. Evenly distributed ten-bit noise, independent from sample to sample and from
// channel to channel.
#pragma once

#include "signals/A_Signal.h"

namespace Pelgar::ORBE::recording {

class Noise_Signal : public A_Signal {
public:
    explicit Noise_Signal(std::uint64_t seed) : m_seed(seed) {}

    void fill(Band band, std::uint64_t sample, std::span<const std::uint16_t> channels,
              std::span<std::uint16_t, channel_count> values) override;

private:
    std::uint64_t m_seed;
};

} // namespace Pelgar::ORBE::recording
