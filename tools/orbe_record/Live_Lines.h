// Program orbe-record. What the user sees while it records: a line a stream, drawn anew on a terminal,
// written out every few seconds elsewhere. Main thread.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace Pelgar::ORBE::recorder {

struct Live_Line {
    std::string stream;
    double seconds = 0.0; // in the files
    double bytes_a_second = 0.0;
    double library_fill = 0.0; // 0 to 1
    std::uint64_t lost = 0;    // samples
};

class Live_Lines {
public:
    using Clock = std::chrono::steady_clock;

    // `file_descriptor` is where they are shown.
    explicit Live_Lines(int file_descriptor);

    // Whether it is time to show them again.
    bool are_due(Clock::time_point now) const { return now >= m_next; }

    void show(const std::vector<Live_Line>& lines, std::uint64_t disk_left, Clock::time_point now);

    // As a table for people.
    static std::string text(const std::vector<Live_Line>& lines, std::uint64_t disk_left, std::size_t width);

private:
    void write(const std::string& text) const;

    int m_file_descriptor;
    bool m_redraws;
    std::size_t m_drawn_lines = 0;
    Clock::time_point m_next;
};

} // namespace Pelgar::ORBE::recorder
