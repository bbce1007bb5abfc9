#include "Pipe_Stage.h"

#include "Stage_Limits.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <span>

namespace Pelgar::ORBE::test {

namespace {

using namespace recording;

} // namespace

Pipe_Stage::Pipe_Stage(const Stage_Options& options, Quick_Clock& clock)
    : m_options(options), m_clock(clock), m_library(Packet_Layout::own, options.ports),
      m_pace(windows_of(Packet_Layout::own), options.ports,
             [this](std::uint64_t ticks) { m_clock.allow(bytes_of(ticks)); }),
      m_host(Packet_Layout::own, m_library.slot(), options.ports, options.rows, m_pace) {}

std::uint64_t Pipe_Stage::longest_opening() const {
    return longest_own_opening;
}

// What holds that many whole RHD frames and no more, wherever they begin.
std::uint64_t Pipe_Stage::bytes_of(std::uint64_t ticks) const {
    const std::uint64_t words = std::uint64_t{m_options.ports} * words_per_super_frame + rhd_frame_words(0);
    return ticks == 0 ? 0 : (ticks - 1) * words * row_bytes / row_words;
}

void Pipe_Stage::begin(std::uint64_t ticks) {
    const std::string path = std::filesystem::absolute("endless.bin").string();
    std::ofstream("ORBE_DFGMZ_ADAPTER_SIM", std::ios::trunc) << path << "\n";
    Stream_Enables enables;
    std::fill_n(enables.ports.begin(), m_options.ports, true);
    enables.rhd_streams = 0;
    m_pipe = std::make_unique<Row_Pipe>(path, m_options.rows, enables);
    m_options.rows.fault_at.reset();
    m_ticks = ticks;
    m_bytes_before = bytes();
    m_library.open();
    m_clock.hold_pieces(piece_bytes, [this](std::uint64_t bytes) {
        m_pace.handed_over(
            bytes * row_words /
            ((std::uint64_t{m_options.ports} * words_per_super_frame + rhd_frame_words(0)) * row_bytes));
    });
    m_pace.begin(ticks);
    m_host.start();
    m_library.start();
}

bool Pipe_Stage::is_over() const {
    return m_clock.played_bytes() + piece_bytes > bytes_of(m_ticks);
}

std::string Pipe_Stage::end() {
    // The pump must get on to see that it is to end.
    m_host.stop_judging();
    m_clock.release();
    m_library.close();
    m_host.finish();
    m_pipe.reset();
    return "";
}

} // namespace Pelgar::ORBE::test
