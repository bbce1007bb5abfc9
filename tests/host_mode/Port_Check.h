// Test support, host mode. What an acquisition program sees of one probe port: whether the packets are whole
// and in order, by their stamps and by the ramps that the channels carry. One thread a run.
#pragma once

#include <NeuropixAPI.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Pelgar::ORBE::test {

// The number of the sample with this stamp, of a run shorter than the stamps' wrap.
constexpr std::uint64_t sample_of(std::uint32_t stamp) {
    return (std::uint64_t{3} * stamp + 2) / 10;
}

class Port_Check {
public:
    // The API's number; whether the channels carry ramps.
    explicit Port_Check(int port, bool has_ramps = true) : m_port(port), m_has_ramps(has_ramps) {}

    void take(const Neuropixels::electrodePacket& packet);

    std::uint64_t packets() const { return m_packets; }

    // Samples that a step of the stamps leaves out, for every such step.
    const std::vector<std::uint64_t>& gaps() const { return m_gaps; }

    std::optional<std::uint64_t> first_sample() const { return m_first_sample; }

    std::uint64_t last_sample() const { return m_last_sample; }

    // What was not as it had to be, the first few times.
    const std::vector<std::string>& faults() const { return m_faults; }

private:
    void take_stamp(std::uint32_t stamp);
    void check_ramps(const std::int16_t (&samples)[NP1_PROBE_CHANNEL_COUNT], std::uint64_t sample);
    void check_lfp(const Neuropixels::electrodePacket& packet);
    int ramp_of(const std::int16_t (&samples)[NP1_PROBE_CHANNEL_COUNT]);
    void note(const std::string& fault);

    int m_port;
    bool m_has_ramps;
    std::uint64_t m_packets = 0;
    std::vector<std::uint64_t> m_gaps;
    std::optional<std::uint64_t> m_first_sample;
    std::uint64_t m_last_sample = 0;
    std::optional<int> m_ramp_offset;
    std::optional<int> m_last_lfp;
    std::vector<std::string> m_faults;
};

} // namespace Pelgar::ORBE::test
