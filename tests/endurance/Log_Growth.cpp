#include "Log_Growth.h"

namespace Pelgar::ORBE::test {

namespace {

constexpr std::uint64_t ticks_per_hour = std::uint64_t{3600} * 30'000;
constexpr std::uint64_t printed_per_hour_and_port = std::uint64_t{2} << 20U;
// Queues tell of their highest marks until there are no higher ones.
constexpr std::uint64_t printed_once = std::uint64_t{16} << 10U;
// The threads' first lines may come when it streams already.
constexpr std::uint64_t logged_per_opening = 1024;

} // namespace

void Log_Growth::end(const Process_State& state, std::uint64_t ticks) {
    m_logged += state.log_bytes - m_begin.log_bytes;
    m_printed += state.printed_bytes - m_begin.printed_bytes;
    m_ticks += ticks;
    ++m_openings;
}

std::string Log_Growth::fault(unsigned ports) const {
    if (m_logged > logged_per_opening * m_openings) {
        return "ORBE.log grew by " + std::to_string(m_logged) + " bytes while streaming";
    }
    const std::uint64_t allowed = printed_once + printed_per_hour_and_port * ports * m_ticks / ticks_per_hour;
    return m_printed <= allowed ? ""
                                : std::to_string(m_printed) + " bytes were printed while streaming, " +
                                      std::to_string(allowed) + " are allowed";
}

} // namespace Pelgar::ORBE::test
