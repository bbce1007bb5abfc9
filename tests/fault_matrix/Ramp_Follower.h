// Test support, fault matrix. Follows the ramps that all channels of a port carry through the packets that a
// host gets: how many samples are left out, how many are not what the probe sent. One thread.
#pragma once

#include <NeuropixAPI.h>

#include <cstdint>
#include <optional>

namespace Pelgar::ORBE::test {

class Ramp_Follower {
public:
    // The API's number; what is added to a sample to get the probe's ten bits.
    Ramp_Follower(int port, int sample_offset) : m_port(port), m_sample_offset(sample_offset) {}

    void take(const Neuropixels::electrodePacket& packet);

    std::uint64_t packets() const { return m_packets; }

    // Packets in a row, up to the last, in which every sample was the one that had to come.
    std::uint64_t streak() const { return m_streak; }

    std::uint64_t lost_samples() const;

    // Samples of which not all channels tell the same number.
    std::uint64_t wrong_samples() const { return m_wrong_samples; }

private:
    using Samples = std::int16_t[NP1_PROBE_CHANNEL_COUNT];

    std::optional<unsigned> number_of(const Samples& samples) const;
    static bool is_unwritten(const Samples& samples);

    int m_port;
    int m_sample_offset;
    std::uint64_t m_packets = 0;
    std::uint64_t m_streak = 0;
    std::int64_t m_lost_on_ramp = 0;
    std::int64_t m_lost_lfp_samples = 0;
    std::uint64_t m_wrong_samples = 0;
    unsigned m_next = 0; // a probe that comes to power begins here
    unsigned m_next_lfp = 0;
};

} // namespace Pelgar::ORBE::test
