// Tools, recording library. What a channel of a probe sees. One object serves one port; the generator calls
// it once for every sample, on its own thread. Values are ten bits wide, 512 is the middle.
#pragma once

#include "stream_format/Wire_Format.h"

#include <cstdint>
#include <span>

namespace Pelgar::ORBE::recording {

// The two bands of a channel: action potentials at 30 kHz, local field potentials at 2.5 kHz.
enum class Band : std::uint8_t { ap, lfp };

constexpr double sample_rate(Band band) {
    return band == Band::ap ? super_frames_per_second : super_frames_per_second / slots_per_sample;
}

inline constexpr int sample_middle = 512;

class A_Signal {
public:
    A_Signal() = default;
    A_Signal(const A_Signal&) = delete;
    A_Signal& operator=(const A_Signal&) = delete;
    virtual ~A_Signal() = default;

    // Writes sample number `sample` of the band for each of `channels`.
    virtual void fill(Band band, std::uint64_t sample, std::span<const std::uint16_t> channels,
                      std::span<std::uint16_t, channel_count> values) = 0;
};

} // namespace Pelgar::ORBE::recording
