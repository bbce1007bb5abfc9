// Tools, recording library. Which channel an ADC of the probe samples in which slot of a group of twelve
// frames.
#pragma once

#include "stream_format/Wire_Format.h"

namespace Pelgar::ORBE::recording {

// The probe's 32 ADCs work in pairs: a pair serves 24 neighbouring channels, its first ADC the even ones, its
// second the odd ones, one channel a frame. `slot` is 0..11.
constexpr std::size_t channel_of(std::size_t adc, std::size_t slot) {
    const std::size_t pair = adc / 2;
    return 2 * slots_per_sample * pair + adc % 2 + 2 * slot;
}

} // namespace Pelgar::ORBE::recording
