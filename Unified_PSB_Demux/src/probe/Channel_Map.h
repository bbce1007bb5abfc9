// Layer: demultiplexer. Which channels a probe's 32 ADCs serve, and when.
#pragma once

#include "probe/I_L2_Demux_CH_Results.h"

#include <cstddef>

namespace Pelgar::ORBE::demux::channel_map {

inline constexpr std::size_t adc_count = 32;
// Slots of a group: frames that carry one sample of every channel between them.
inline constexpr std::size_t slot_count = 12;

// Two neighbouring ADCs take turns on a run of 24 neighbouring channels: the even ADC on the even channels,
// the odd ADC on the odd ones. Slot j of a group therefore holds channels 24 m + 2 j and 24 m + 2 j + 1 of
// pair m.
inline constexpr std::size_t adcs_per_pair = 2;
inline constexpr std::size_t pair_count = adc_count / adcs_per_pair;
inline constexpr std::size_t channels_per_pair = adcs_per_pair * slot_count;

static_assert(channels_per_pair * pair_count == channel_count);

} // namespace Pelgar::ORBE::demux::channel_map
