#include "Endurance_Run.h"

#include <algorithm>
#include <cinttypes>
#include <thread>

namespace Pelgar::ORBE::test {

namespace {

using namespace std::chrono_literals;

constexpr double ticks_per_second = 30'000.0;
constexpr auto poll_interval = 1ms;
// How long nothing may move.
constexpr auto patience = 120s;

// What may be under way at once when threads have to wait for a processor. The sanitizers keep what was
// freed.
#if defined(ORBE_SANITIZED)
constexpr std::uint64_t resident_allowance = std::uint64_t{512} << 20U;
#else
constexpr std::uint64_t resident_allowance = std::uint64_t{32} << 20U;
#endif

double mebibytes(std::uint64_t bytes) {
    return static_cast<double>(bytes) / 1048576.0;
}

} // namespace

Endurance_Run::Endurance_Run(const Run_Options& options, A_Stage& stage, std::FILE* report,
                             const char* printed)
    : m_options(options), m_stage(stage), m_report(report), m_printed(printed),
      m_resident("resident memory", resident_allowance) {}

std::vector<std::string> Endurance_Run::run() {
    std::vector<std::string> faults;
    while (faults.empty() && m_ticks_before < m_options.ticks && !wall_time_is_over()) {
        const std::uint64_t left = m_options.ticks - m_ticks_before;
        if (const auto fault =
                run_opening(std::min({left, m_stage.longest_opening(), m_options.longest_opening}))) {
            faults.push_back(*fault);
        }
    }
    if (faults.empty()) {
        for (const std::string& fault :
             {m_resident.fault(), m_handles.fault(), m_threads.fault(), m_log.fault(m_options.ports)}) {
            if (!fault.empty()) {
                faults.push_back(fault);
            }
        }
    }
    print_summary();
    return faults;
}

std::optional<std::string> Endurance_Run::run_opening(std::uint64_t ticks) {
    m_stage.begin(ticks);
    m_streams = true;
    ++m_openings;
    m_log.begin(Process_State::now(m_printed));
    std::uint64_t last = 0;
    auto moved = Clock::now();
    std::string fault;
    while (fault.empty() && !m_stage.is_over() && !wall_time_is_over()) {
        std::this_thread::sleep_for(poll_interval);
        look();
        fault = m_stage.host().fault();
        if (const std::uint64_t now = m_stage.received(); now != last) {
            last = now;
            moved = Clock::now();
        } else if (Clock::now() - moved > patience) {
            fault = "nothing has come for " + std::to_string(patience.count()) + " s";
        }
    }
    m_log.end(Process_State::now(m_printed), m_stage.received());
    const bool is_over = m_stage.is_over();
    const std::string at_end = m_stage.end();
    // What the readers had not come to before.
    if (fault.empty()) {
        fault = m_stage.host().fault();
    }
    if (fault.empty()) {
        fault = at_end;
    }
    // The last ones of a stream stay where they fill nothing whole; a recording is played to its end.
    m_ticks_before += is_over ? std::max(ticks, m_stage.received()) : m_stage.received();
    m_streams = false;
    return fault.empty() ? std::nullopt : std::optional(fault);
}

void Endurance_Run::look() {
    const auto now = Clock::now();
    if (now < m_next_look) {
        return;
    }
    m_next_look = now + m_options.look_every;
    m_state = Process_State::now(m_printed);
    m_resident.add(m_state.resident_bytes);
    m_handles.add(m_state.handles);
    m_threads.add(m_state.threads);
    if (now >= m_next_line) {
        m_next_line = now + m_options.line_every;
        print_line();
    }
}

void Endurance_Run::print_line() {
    const double seconds = seconds_since_begin();
    const double box_seconds = static_cast<double>(ticks()) / ticks_per_second;
    std::fprintf(m_report,
                 "%s : box time %.1f s (%.3f h) in %.1f s, %.1f times real time, %" PRIu64
                 " port and %" PRIu64 " ADC packets, %.1f MB/s, resident %.1f MiB, %" PRIu64
                 " handles, %" PRIu64 " threads, ORBE.log %" PRIu64 " bytes, printed %" PRIu64 " bytes\n",
                 m_options.mode.c_str(), box_seconds, box_seconds / 3600.0, seconds, box_seconds / seconds,
                 m_stage.host().port_packets(), m_stage.host().adc_packets(),
                 static_cast<double>(m_stage.bytes()) / 1e6 / seconds, mebibytes(m_state.resident_bytes),
                 m_state.handles, m_state.threads, m_state.log_bytes, m_state.printed_bytes);
    std::fflush(m_report);
}

void Endurance_Run::print_summary() {
    m_state = Process_State::now(m_printed);
    print_line();
    std::fprintf(
        m_report,
        "%s : %u openings, resident %.1f MiB once settled and %.1f at most after that, handles %" PRIu64
        " and %" PRIu64 ", threads %" PRIu64 " and %" PRIu64 ", while streaming %" PRIu64
        " bytes logged and %" PRIu64 " printed\n",
        m_options.mode.c_str(), m_openings, mebibytes(m_resident.settled()), mebibytes(m_resident.highest()),
        m_handles.settled(), m_handles.highest(), m_threads.settled(), m_threads.highest(), m_log.logged(),
        m_log.printed());
    std::fflush(m_report);
}

bool Endurance_Run::wall_time_is_over() const {
    return m_options.wall_time.count() > 0 && Clock::now() - m_begin >= m_options.wall_time;
}

double Endurance_Run::seconds_since_begin() const {
    return std::chrono::duration<double>(Clock::now() - m_begin).count();
}

} // namespace Pelgar::ORBE::test
