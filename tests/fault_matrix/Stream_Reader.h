// Test support, fault matrix. Takes everything that has come from all ports, and from the ADC inputs, and
// tells what is missing or wrong in it. The host's thread; waits for nothing.
#pragma once

#include "ADC_Follower.h"
#include "A_Way.h"
#include "Ramp_Follower.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace Pelgar::ORBE::test {

class Stream_Reader {
public:
    struct Losses {
        std::array<std::uint64_t, 4> samples{};
        std::array<std::uint64_t, 4> wrong{};
        std::array<std::uint64_t, 4> packets{};
        std::uint64_t adc = 0;
        std::uint64_t wrong_adc = 0;
    };

    explicit Stream_Reader(const A_Way& way);

    // What is sent begins anew.
    void follow_from_here();

    void drain();

    // Since the last beginning.
    Losses losses() const;

    // What has been lost since then, for people.
    std::string text_of(const Losses& before) const;

    // Whether the last packets of all were what had to come.
    bool is_whole() const;

private:
    void drain_adc();

    const A_Way& m_way;
    std::vector<Ramp_Follower> m_ports;
    ADC_Follower m_adc;
};

} // namespace Pelgar::ORBE::test
