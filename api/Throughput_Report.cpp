#include "Throughput_Report.h"

#include "Console.h"
#include "Relaxed.h"

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>

namespace Pelgar::ORBE::npoe_adapter {

namespace {

// The data rate of the full box, which the line divides by the seconds since the last one; it is not measured.
constexpr std::int64_t full_box_megabytes = 157;

std::array<Relaxed<std::uint8_t>, 4> g_read_counters;
Relaxed<std::int64_t> g_last_measurement_ns{0};

std::int64_t steady_clock_ns() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::nanoseconds>(now).count();
}

} // namespace

void report_throughput(int port_index, int packet_count) {
    if (g_read_counters[static_cast<std::size_t>(port_index)].fetch_add(1) != 0) {
        return;
    }
    const std::int64_t now = steady_clock_ns();
    const std::int64_t seconds = (now - g_last_measurement_ns) / 1'000'000'000;
    if (seconds >= 1) {
        console::out(packet_count, " electrode packet transferred. NP port : ", port_index,
                     ", data : ", full_box_megabytes / seconds, " MB/s\n");
    }
    g_last_measurement_ns = now;
}

} // namespace Pelgar::ORBE::npoe_adapter
