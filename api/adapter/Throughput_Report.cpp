#include "adapter/Throughput_Report.h"

#include "common/Console.h"
#include "common/Relaxed.h"
#include "rows/C_Async_PSB_And_RHD_Demux.h"

#include <array>
#include <cstdint>

namespace Pelgar::ORBE::npoe_adapter {

namespace {

// The data rate of the full box, which the line divides by the seconds since the last one; it is not
// measured.
constexpr std::int64_t full_box_megabytes = 157;

constexpr std::int64_t nanoseconds_per_second = 1'000'000'000;

std::array<Relaxed<std::uint8_t>, demux::np_port_count> g_read_counters;
Relaxed<std::int64_t> g_last_measurement_ns{0};

} // namespace

void report_throughput(unsigned port_index, int packet_count, std::int64_t now_ns) {
    if (g_read_counters[port_index].fetch_add(1) != 0) {
        return;
    }
    const std::int64_t seconds = (now_ns - g_last_measurement_ns) / nanoseconds_per_second;
    if (seconds >= 1) {
        console::out(packet_count, " electrode packet transferred. NP port : ", port_index,
                     ", data : ", full_box_megabytes / seconds, " MB/s\n");
    }
    g_last_measurement_ns = now_ns;
}

} // namespace Pelgar::ORBE::npoe_adapter
