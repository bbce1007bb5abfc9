// Endurance test. One run of one mode: openings until the box time is over, a look at the process now and
// then, a line every few seconds, and the verdict. The main thread.
#pragma once

#include "A_Stage.h"
#include "Flat_Series.h"
#include "Log_Growth.h"
#include "Process_State.h"

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <optional>
#include <string>
#include <vector>

namespace Pelgar::ORBE::test {

struct Run_Options {
    std::string mode;
    unsigned ports = 1;
    std::uint64_t ticks = 0;                                                   // of box time
    std::uint64_t longest_opening = std::numeric_limits<std::uint64_t>::max(); // ticks
    std::chrono::seconds wall_time{0};                                         // ends the run early; 0: never
    std::chrono::milliseconds look_every{1000};                                // at the process
    std::chrono::seconds line_every{5};
};

class Endurance_Run {
public:
    // Lines go to `report`, what the library prints into the file named `printed`.
    Endurance_Run(const Run_Options& options, A_Stage& stage, std::FILE* report, const char* printed);

    // Answers what was wrong; nothing when all was well.
    std::vector<std::string> run();

private:
    using Clock = std::chrono::steady_clock;

    // Nothing when it went well.
    std::optional<std::string> run_opening(std::uint64_t ticks);
    void look();
    void print_line();
    void print_summary();
    bool wall_time_is_over() const;
    double seconds_since_begin() const;

    std::uint64_t ticks() const { return m_ticks_before + (m_streams ? m_stage.received() : 0); }

    Run_Options m_options;
    A_Stage& m_stage;
    std::FILE* m_report;
    const char* m_printed;
    Clock::time_point m_begin = Clock::now();
    Clock::time_point m_next_look = m_begin;
    Clock::time_point m_next_line = m_begin;
    std::uint64_t m_ticks_before = 0; // of earlier openings
    unsigned m_openings = 0;
    bool m_streams = false;
    Process_State m_state;
    Flat_Series m_resident;
    Flat_Series m_handles{"handles", 0};
    Flat_Series m_threads{"threads", 0};
    Log_Growth m_log;
};

} // namespace Pelgar::ORBE::test
