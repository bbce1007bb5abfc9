#include "signals/Channel_Signal.h"

#include "numbers/Hash.h"
#include "signals/Noise_Signal.h"
#include "signals/Pattern_Signal.h"
#include "signals/Ramp_Signal.h"
#include "signals/Spike_Signal.h"
#include "signals/Tone_Signal.h"

#include <array>

namespace Pelgar::ORBE::recording {

namespace {

constexpr Signal_Kind all_kinds[] = {Signal_Kind::noise, Signal_Kind::tone, Signal_Kind::ramp,
                                     Signal_Kind::spikes, Signal_Kind::pattern};

std::unique_ptr<A_Signal> make_signal(Signal_Kind kind, double tone_frequency, unsigned port,
                                      std::uint64_t seed) {
    switch (kind) {
    case Signal_Kind::tone:
        return std::make_unique<Tone_Signal>(tone_frequency, port);
    case Signal_Kind::ramp:
        return std::make_unique<Ramp_Signal>(port);
    case Signal_Kind::spikes:
        return std::make_unique<Spike_Signal>(mix(seed, port));
    case Signal_Kind::pattern:
        return std::make_unique<Pattern_Signal>();
    case Signal_Kind::noise:
        break;
    }
    return std::make_unique<Noise_Signal>(mix(seed, port));
}

} // namespace

Channel_Signal::Channel_Signal(const std::vector<Signal_Choice>& choices, double tone_frequency,
                               unsigned port, std::uint64_t seed) {
    std::array<Signal_Kind, channel_count> kinds;
    kinds.fill(Signal_Kind::noise);
    for (const Signal_Choice& choice : choices) {
        for (const std::uint16_t channel : choice.channels) {
            kinds.at(channel) = choice.kind;
        }
    }
    for (const Signal_Kind kind : all_kinds) {
        std::vector<std::uint16_t> channels;
        for (std::size_t channel = 0; channel < channel_count; ++channel) {
            if (kinds[channel] == kind) {
                channels.push_back(static_cast<std::uint16_t>(channel));
            }
        }
        if (!channels.empty()) {
            m_parts.push_back({make_signal(kind, tone_frequency, port, seed), std::move(channels)});
        }
    }
}

void Channel_Signal::fill(Band band, std::uint64_t sample, std::span<std::uint16_t, channel_count> values) {
    for (const Part& part : m_parts) {
        part.signal->fill(band, sample, part.channels, values);
    }
}

} // namespace Pelgar::ORBE::recording
