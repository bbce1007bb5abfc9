// Tools, recording library. Which channels of a recording carry which signal, as the user writes it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace Pelgar::ORBE::recording {

enum class Signal_Kind : std::uint8_t { noise, tone, ramp, spikes, pattern };

struct Signal_Choice {
    Signal_Kind kind = Signal_Kind::noise;
    std::vector<std::uint16_t> channels; // 0..383, ascending
};

// All channels.
std::vector<std::uint16_t> every_channel();

// Reads "tone" (all channels) or "tone:0-95,100". Throws std::invalid_argument with a text for the user.
Signal_Choice parse_signal_choice(const std::string& text);

} // namespace Pelgar::ORBE::recording
