#include "description/Recording_Description.h"

#include <numeric>

namespace Pelgar::ORBE::recorder {

namespace {

constexpr std::size_t reference_channel = 191;

} // namespace

std::vector<int> saved_channels(const Recording_Description& description) {
    if (!description.saved_channels.empty()) {
        return description.saved_channels;
    }
    std::vector<int> all(channel_count);
    std::iota(all.begin(), all.end(), 0);
    return all;
}

Probe_Description default_probe(int port) {
    Probe_Description probe;
    probe.port = port;
    for (std::size_t channel = 0; channel < channel_count; ++channel) {
        probe.channels[channel].electrode = channel == reference_channel ? -1 : static_cast<int>(channel);
    }
    return probe;
}

} // namespace Pelgar::ORBE::recorder
