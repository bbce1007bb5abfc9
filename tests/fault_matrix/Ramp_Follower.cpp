#include "Ramp_Follower.h"

#include <algorithm>
#include <iterator>

namespace Pelgar::ORBE::test {

namespace {

constexpr unsigned ramp_length = 1024;
constexpr unsigned ramp_mask = ramp_length - 1;
constexpr int port_shift = 256;

} // namespace

void Ramp_Follower::take(const Neuropixels::electrodePacket& packet) {
    bool right = true;
    for (const Samples& samples : packet.apData) {
        if (m_packets == 0 && is_unwritten(samples)) {
            continue; // the first packet of a run has eleven samples in the box's own way
        }
        const auto number = number_of(samples);
        if (!number) {
            ++m_wrong_samples;
            right = false;
        } else if (*number != m_next) {
            m_lost_on_ramp += (*number - m_next) & ramp_mask;
            right = false;
        }
        m_next = (number.value_or(m_next) + 1) & ramp_mask;
    }
    const auto lfp = number_of(packet.lfpData);
    if (lfp) {
        const unsigned step = (*lfp - m_next_lfp) & ramp_mask;
        right = right && step == 0;
        // Back by one when one comes twice.
        m_lost_lfp_samples += step < ramp_length / 2 ? std::int64_t{step} : std::int64_t{step} - ramp_length;
        m_next_lfp = (*lfp + 1) & ramp_mask;
    }
    right = right && lfp;
    m_streak = right ? m_streak + 1 : 0;
    ++m_packets;
}

// The steps of the ramp tell a loss only up to whole ramps; the packets' LFP samples, one in twelve, tell
// them.
std::uint64_t Ramp_Follower::lost_samples() const {
    std::int64_t lost = m_lost_on_ramp;
    while (lost + ramp_length / 2 < NP1_PROBE_SUPERFRAMESIZE * m_lost_lfp_samples) {
        lost += ramp_length;
    }
    return static_cast<std::uint64_t>(lost);
}

std::optional<unsigned> Ramp_Follower::number_of(const Samples& samples) const {
    const auto number = [&](int channel) {
        return static_cast<unsigned>(samples[channel] + m_sample_offset - channel -
                                     port_shift * (m_port - 1)) &
               ramp_mask;
    };
    for (int channel = 0; channel < NP1_PROBE_CHANNEL_COUNT; ++channel) {
        const int value = samples[channel] + m_sample_offset;
        if (value < 0 || value > static_cast<int>(ramp_mask) || number(channel) != number(0)) {
            return std::nullopt;
        }
    }
    return number(0);
}

bool Ramp_Follower::is_unwritten(const Samples& samples) {
    return std::all_of(std::begin(samples), std::end(samples),
                       [](std::int16_t sample) { return sample == 0; });
}

} // namespace Pelgar::ORBE::test
