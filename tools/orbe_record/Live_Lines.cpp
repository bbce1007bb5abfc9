#include "Live_Lines.h"

#include "terminal/File_Descriptors.h"
#include "terminal/Terminal.h"
#include "terminal/Text_Format.h"
#include "terminal/Text_Table.h"

#include <algorithm>

namespace Pelgar::ORBE::recorder {

namespace {

constexpr std::chrono::milliseconds redraw_interval{250};
constexpr std::chrono::seconds write_interval{5};
constexpr double bytes_in_megabyte = 1e6;
constexpr double bytes_in_gigabyte = 1e9;

} // namespace

Live_Lines::Live_Lines(int file_descriptor)
    : m_file_descriptor(file_descriptor), m_redraws(tools::terminal::can_redraw(file_descriptor)),
      m_next(Clock::now() + (m_redraws ? redraw_interval : std::chrono::milliseconds(write_interval))) {}

std::string Live_Lines::text(const std::vector<Live_Line>& lines, std::uint64_t disk_left,
                             std::size_t width) {
    tools::Text_Table table({"stream", "time, s", "MB/s", "queue, %", "lost samples", "disk left, GB"});
    for (const Live_Line& line : lines) {
        table.add({line.stream, tools::text_of("%.1f", line.seconds),
                   tools::text_of("%.1f", line.bytes_a_second / bytes_in_megabyte),
                   tools::text_of("%.0f", line.library_fill * 100.0), std::to_string(line.lost),
                   tools::text_of("%.1f", static_cast<double>(disk_left) / bytes_in_gigabyte)});
    }
    return table.text(width);
}

void Live_Lines::show(const std::vector<Live_Line>& lines, std::uint64_t disk_left, Clock::time_point now) {
    if (!m_redraws) {
        m_next = now + write_interval;
        write(text(lines, disk_left, tools::terminal::unlimited_width));
        return;
    }
    m_next = now + redraw_interval;
    // The last column stays free: some terminals go on to the next line as soon as it is written.
    const std::string table = text(lines, disk_left, tools::terminal::width(m_file_descriptor) - 1);
    std::string drawn;
    if (m_drawn_lines > 0) {
        drawn = tools::text_of("\x1B[%dA", static_cast<int>(m_drawn_lines));
    }
    m_drawn_lines = 0;
    for (const char character : table) {
        if (character == '\n') {
            drawn += "\x1B[K";
            ++m_drawn_lines;
        }
        drawn += character;
    }
    write(drawn);
}

void Live_Lines::write(const std::string& text) const {
    tools::descriptors::write(m_file_descriptor, text.data(), text.size());
}

} // namespace Pelgar::ORBE::recorder
