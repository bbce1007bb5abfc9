#include "Recording_Stage.h"

#include "Stage_Limits.h"

#include <host_streams/Prompt_Delivery.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>

namespace Pelgar::ORBE::test {

namespace {

constexpr std::uint64_t ticks_per_millisecond = 30;
// A wait lasts whole milliseconds, and the last piece is due a little behind its last tick.
constexpr std::chrono::milliseconds rounding{2};

} // namespace

Recording_Stage::Recording_Stage(const Stage_Options& options, std::uint64_t ticks, Quick_Clock& clock)
    : m_clock(clock), m_library(Packet_Layout::host, options.ports),
      m_pace(windows_of(Packet_Layout::host), options.ports,
             [this](std::uint64_t limit) {
                 m_clock.allow_time(std::chrono::milliseconds(limit / ticks_per_millisecond) + rounding);
             }),
      m_host(Packet_Layout::host, m_library.slot(), options.ports, options.rows, m_pace), m_ticks(ticks),
      // A block is complete when the row after it comes.
      m_due((ticks - 1) / npoe_adapter::prompt_block_super_frames * npoe_adapter::prompt_block_super_frames) {
    const std::string path = std::filesystem::absolute("opening.bin").string();
    std::ofstream("ORBE_DFGMZ_ADAPTER_SIM", std::ios::trunc) << path << "\n";
    Stream_Enables enables;
    std::fill_n(enables.ports.begin(), options.ports, true);
    enables.rhd_streams = 0;
    Endless_Rows rows(options.rows);
    std::ofstream file(path, std::ios::binary);
    for (std::uint64_t tick = 0; tick < ticks; ++tick) {
        rows.make_tick(enables);
        const auto bytes = rows.take(recording::piece_bytes);
        file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        m_recording_bytes += bytes.size();
    }
}

void Recording_Stage::begin(std::uint64_t /*ticks*/) {
    m_library.open();
    m_clock.hold_time();
    m_pace.begin(m_ticks);
    m_host.start();
    m_library.start();
}

std::string Recording_Stage::end() {
    m_bytes += m_recording_bytes;
    // The pump must get on to see that it is to end.
    m_clock.release();
    m_host.finish();
    m_library.stop();
    m_library.close();
    return "";
}

} // namespace Pelgar::ORBE::test
