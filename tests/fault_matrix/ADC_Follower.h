// Test support, fault matrix. Follows what the ADC inputs of the virtual box show through the packets that a
// host gets. One thread.
#pragma once

#include "generator/RHD_Generator.h"

#include <cstdint>

namespace Pelgar::ORBE::test {

class ADC_Follower {
public:
    // The seed of the box's stream.
    explicit ADC_Follower(std::uint64_t seed);

    // The eight inputs as the host gets them.
    void take(const std::int16_t* inputs);

    std::uint64_t packets() const { return m_packets; }

    // Packets in a row, up to the last, that were the ones that had to come.
    std::uint64_t streak() const { return m_streak; }

    std::uint64_t lost_packets() const { return m_lost; }

    // Packets that the box has never sent.
    std::uint64_t wrong_packets() const { return m_wrong; }

private:
    bool is_frame(std::uint64_t frame, const std::int16_t* inputs) const;

    recording::RHD_Generator m_generator;
    std::uint64_t m_next = 0;
    std::uint64_t m_packets = 0;
    std::uint64_t m_streak = 0;
    std::uint64_t m_lost = 0;
    std::uint64_t m_wrong = 0;
};

} // namespace Pelgar::ORBE::test
