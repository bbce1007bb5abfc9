// Road model: what comes out at the end of the road, in words of its own.
#pragma once

#include "Road_Settings.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace Pelgar::ORBE::road_model {

using Bytes = std::vector<std::uint8_t>;
using Channels = std::array<std::uint16_t, channel_count>;

inline constexpr std::size_t packet_rows = 12;
inline constexpr std::size_t longest_adc_row = 32;

// What is printed on standard output and on standard error, and the lines of the log, each behind its
// verbosity.
struct Told {
    std::string out;
    std::string err;
    std::vector<std::string> log;
};

struct Probe_Packet {
    std::array<std::uint32_t, packet_rows> stamps{};
    std::array<std::array<std::int16_t, channel_count>, packet_rows> ap{};
    std::array<std::int16_t, channel_count> lfp{};
    std::array<std::uint16_t, packet_rows> status{};
};

struct ADC_Packet {
    std::array<std::int16_t, longest_adc_row> row{};
    std::uint32_t stamp = 0;
    std::uint16_t status = 0;
    std::uint16_t payload = 0;
};

struct Damage {
    std::uint64_t row_gaps = 0;
    std::uint64_t frame_gaps = 0;
    std::uint64_t wrong_tags = 0;
};

// What the whole process counts, over all runs of the road, from its beginning.
struct Process_Counters {
    std::size_t main_queue_mark = 0;
    std::array<std::size_t, port_count> np_queue_marks{};
    unsigned np_packet_drops = 0;
    unsigned adc_packet_drops = 0;
    std::uint32_t last_ttl = 0;
};

} // namespace Pelgar::ORBE::road_model
