// Test support: the road of a probe's data from a block of serial bus words to channel sets, written word for
// word from the wire format, slowly and without regard to the code it is compared with.
#pragma once

#include "Demux_Streams.h"
#include "Recording_Listeners.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace Pelgar::ORBE::test {

class NP_Reference_Decoder {
public:
    void feed_block(std::span<const std::uint8_t> bytes);
    void restart_counters();

    std::vector<Channel_Set> sets;
    std::string out;
    std::string err;

private:
    void take_frame(std::span<const unsigned> words);
    void take_values(const std::vector<unsigned>& values);

    Channel_Values m_ap{};
    Channel_Values m_lfp{};
    std::int64_t m_last_counter20 = -1;
    std::int64_t m_last_counter32 = -1;
    unsigned m_last_high = 0;
    std::uint32_t m_wraps = 0;
};

} // namespace Pelgar::ORBE::test
