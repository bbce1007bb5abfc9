#include "Port_Check.h"

namespace Pelgar::ORBE::test {

namespace {

constexpr std::size_t most_faults = 5;
constexpr int ramp_length = 1024;
constexpr int middle = 512;
constexpr int port_shift = 256;
constexpr unsigned error_bits = ELECTRODEPACKET_STATUS_ERR_COUNT | ELECTRODEPACKET_STATUS_ERR_SERDES |
                                ELECTRODEPACKET_STATUS_ERR_LOCK | ELECTRODEPACKET_STATUS_ERR_POP |
                                ELECTRODEPACKET_STATUS_ERR_SYNC;

int modulo(std::int64_t number) {
    return static_cast<int>((number % ramp_length + ramp_length) % ramp_length);
}

} // namespace

void Port_Check::take(const Neuropixels::electrodePacket& packet) {
    for (std::size_t row = 0; row < NP1_PROBE_SUPERFRAMESIZE; ++row) {
        take_stamp(packet.timestamp[row]);
        if ((packet.Status[row] & ~unsigned{ELECTRODEPACKET_STATUS_SYNC}) != 0) {
            note((packet.Status[row] & error_bits) != 0 ? "an error bit is set" : "a TTL line is set");
        }
        if (m_has_ramps) {
            check_ramps(packet.apData[row], m_last_sample);
        }
    }
    if (m_has_ramps) {
        check_lfp(packet);
    }
    ++m_packets;
}

void Port_Check::take_stamp(std::uint32_t stamp) {
    const std::uint64_t sample = sample_of(stamp);
    if (!m_first_sample) {
        m_first_sample = sample;
    } else if (sample <= m_last_sample) {
        note("stamp " + std::to_string(stamp) + " does not go on");
    } else if (sample != m_last_sample + 1) {
        m_gaps.push_back(sample - m_last_sample - 1);
    }
    m_last_sample = sample;
}

// The number that all channels tell, if they agree.
int Port_Check::ramp_of(const std::int16_t (&samples)[NP1_PROBE_CHANNEL_COUNT]) {
    const int first = modulo(samples[0] + middle - port_shift * (m_port - 1));
    for (int channel = 0; channel < NP1_PROBE_CHANNEL_COUNT; ++channel) {
        const int sample = samples[channel];
        if (sample < -middle || sample >= middle) {
            note("sample " + std::to_string(sample));
        } else if (modulo(sample + middle - port_shift * (m_port - 1) - channel) != first) {
            note("channel " + std::to_string(channel) + " is of another sample");
            break;
        }
    }
    return first;
}

// What a channel carries and what its stamp says belong together throughout a run.
void Port_Check::check_ramps(const std::int16_t (&samples)[NP1_PROBE_CHANNEL_COUNT], std::uint64_t sample) {
    const int offset = modulo(ramp_of(samples) - static_cast<std::int64_t>(sample % ramp_length));
    if (!m_ramp_offset) {
        m_ramp_offset = offset;
    } else if (offset != *m_ramp_offset) {
        note("sample " + std::to_string(sample) + " carries another one's values");
        m_ramp_offset = offset;
    }
}

// One LFP sample a packet, until something is lost.
void Port_Check::check_lfp(const Neuropixels::electrodePacket& packet) {
    if (!m_gaps.empty()) {
        return;
    }
    const int lfp = ramp_of(packet.lfpData);
    if (m_last_lfp && lfp != modulo(*m_last_lfp + 1)) {
        note("LFP sample " + std::to_string(lfp) + " behind " + std::to_string(*m_last_lfp));
    }
    m_last_lfp = lfp;
}

void Port_Check::note(const std::string& fault) {
    if (m_faults.size() < most_faults) {
        m_faults.push_back("port " + std::to_string(m_port) + ", packet " + std::to_string(m_packets) +
                           " : " + fault);
    }
}

} // namespace Pelgar::ORBE::test
