#include "signals/Signal_Choice.h"

#include "numbers/Parse_Unsigned.h"
#include "stream_format/Wire_Format.h"

#include <algorithm>
#include <numeric>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace Pelgar::ORBE::recording {

namespace {

constexpr std::pair<std::string_view, Signal_Kind> signal_names[] = {
    {"noise", Signal_Kind::noise},   {"tone", Signal_Kind::tone},       {"ramp", Signal_Kind::ramp},
    {"spikes", Signal_Kind::spikes}, {"pattern", Signal_Kind::pattern},
};

Signal_Kind parse_kind(std::string_view text) {
    for (const auto& [name, kind] : signal_names) {
        if (text == name) {
            return kind;
        }
    }
    throw std::invalid_argument("unknown signal '" + std::string(text) +
                                "' (noise, tone, ramp, spikes or pattern)");
}

std::uint16_t parse_channel(std::string_view text) {
    const std::uint64_t channel = parse_unsigned(text, "channel");
    if (channel >= channel_count) {
        throw std::invalid_argument("channel " + std::string(text) + " is not one of 0 to 383");
    }
    return static_cast<std::uint16_t>(channel);
}

} // namespace

std::vector<std::uint16_t> every_channel() {
    std::vector<std::uint16_t> channels(channel_count);
    std::iota(channels.begin(), channels.end(), std::uint16_t{0});
    return channels;
}

Signal_Choice parse_signal_choice(const std::string& text) {
    const std::string_view whole = text;
    const std::size_t colon = whole.find(':');
    Signal_Choice choice;
    choice.kind = parse_kind(whole.substr(0, colon));
    if (colon == std::string_view::npos) {
        choice.channels = every_channel();
        return choice;
    }
    std::string_view list = whole.substr(colon + 1);
    while (true) {
        const std::size_t comma = list.find(',');
        const std::string_view range = list.substr(0, comma);
        const std::size_t dash = range.find('-');
        const std::uint16_t first = parse_channel(range.substr(0, dash));
        const std::uint16_t last =
            dash == std::string_view::npos ? first : parse_channel(range.substr(dash + 1));
        if (last < first) {
            throw std::invalid_argument("channels '" + std::string(range) + "' run backwards");
        }
        for (std::uint16_t channel = first; channel <= last; ++channel) {
            choice.channels.push_back(channel);
        }
        if (comma == std::string_view::npos) {
            break;
        }
        list = list.substr(comma + 1);
    }
    std::sort(choice.channels.begin(), choice.channels.end());
    choice.channels.erase(std::unique(choice.channels.begin(), choice.channels.end()), choice.channels.end());
    return choice;
}

} // namespace Pelgar::ORBE::recording
