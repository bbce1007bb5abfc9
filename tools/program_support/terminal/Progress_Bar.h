// Tools, what all programs share. One line on standard error that shows how far long work has come. Shows
// nothing when standard error is not a terminal that can draw a line anew, and nothing for work of less than
// half a second.
#pragma once

#include "terminal/Terminal.h"

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

namespace Pelgar::ORBE::tools {

class Progress_Bar {
public:
    // `file_descriptor` is where the bar is drawn when it is a terminal.
    Progress_Bar(std::string label, std::uint64_t total, int file_descriptor = 2);
    // Clears the line.
    ~Progress_Bar();
    Progress_Bar(const Progress_Bar&) = delete;
    Progress_Bar& operator=(const Progress_Bar&) = delete;

    // Draws the bar anew, at most ten times a second. `remark` stands at the end of the line.
    void show(std::uint64_t done, std::string_view remark = {});

    // The line for `done` of `total`: "label [#####.....]  50 %  remark". What does not fit into `width`
    // characters goes: first most of the bar, then the remark, then the end of the label.
    static std::string line(std::string_view label, std::uint64_t done, std::uint64_t total,
                            std::string_view remark, std::size_t width = terminal::unlimited_width);

private:
    void draw(const std::string& text) const;

    std::string m_label;
    std::uint64_t m_total;
    int m_file_descriptor;
    bool m_terminal;
    bool m_drawn = false;
    std::chrono::steady_clock::time_point m_next;
};

} // namespace Pelgar::ORBE::tools
