// Program orbe-record. Records from an opened box into a folder until the time is over, the user stops it, or
// something goes wrong. Main thread; blocks all the while.
#pragma once

#include "A_Stream.h"
#include "Live_Lines.h"
#include "Opened_Box.h"
#include "Record_Options.h"
#include "description/Recording_Description.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Pelgar::ORBE::recorder {

struct Record_Result {
    std::vector<Live_Line> streams; // without rates
    std::uint64_t bytes = 0;        // written
    std::uint64_t lost_bytes = 0;   // of the raw stream
    bool is_short = false;          // the recording that plays ended before the time was over
    std::string loss;               // what else is missing, for people
    std::string write_problem;      // why the disk did not take it all, for people

    bool lost_something() const;
};

class Recorder {
public:
    // The probes on these ports are set up; the folder is there and empty. All must outlive the object.
    Recorder(Opened_Box& box, const Record_Options& options, Recording_Description description,
             int user_errors);

    // Throws std::runtime_error when nothing was recorded.
    Record_Result run();

private:
    using Clock = std::chrono::steady_clock;

    void start();
    void wait_for_first_samples();
    void leave_silent_adc_out();
    void make_writer();
    void record();
    void note_write_problems();
    bool has_all() const;
    bool is_silent(Clock::time_point now);
    std::vector<Live_Line> lines();
    std::uint64_t disk_left() const;
    void finish();
    void look_at_raw_capture();
    void look_for_short_streams();

    Opened_Box& m_box;
    const Record_Options& m_options;
    Recording_Description m_description;
    Live_Lines m_live_lines;
    // Before the streams, which write into it.
    std::unique_ptr<A_Recording_Writer> m_writer;
    std::vector<std::unique_ptr<A_Stream>> m_streams;
    Start_Time m_started_at{};
    std::optional<std::uint64_t> m_wanted_samples;
    std::uint64_t m_packets = 0;
    Clock::time_point m_last_news;
    std::vector<std::uint64_t> m_shown_samples;
    Clock::time_point m_shown_at;
    Record_Result m_result;
};

} // namespace Pelgar::ORBE::recorder
