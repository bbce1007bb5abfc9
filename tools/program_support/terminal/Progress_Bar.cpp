#include "terminal/Progress_Bar.h"

#include "terminal/File_Descriptors.h"
#include "terminal/Text_Format.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace Pelgar::ORBE::tools {

namespace {

constexpr std::size_t widest_bar = 40;
constexpr std::size_t narrowest_bar = 10;
constexpr std::chrono::milliseconds first_drawing{500};
constexpr std::chrono::milliseconds drawing_interval{100};
constexpr const char* clear_line = "\r\x1B[K";

} // namespace

Progress_Bar::Progress_Bar(std::string label, std::uint64_t total, int file_descriptor)
    : m_label(std::move(label)), m_total(total), m_file_descriptor(file_descriptor),
      m_terminal(terminal::can_redraw(file_descriptor)),
      m_next(std::chrono::steady_clock::now() + first_drawing) {}

Progress_Bar::~Progress_Bar() {
    if (m_drawn) {
        draw(clear_line);
    }
}

void Progress_Bar::show(std::uint64_t done, std::string_view remark) {
    if (!m_terminal) {
        return;
    }
    const auto now = std::chrono::steady_clock::now();
    if (now < m_next) {
        return;
    }
    m_next = now + drawing_interval;
    m_drawn = true;
    // The last column stays free: some terminals go on to the next line as soon as it is written.
    draw(clear_line + line(m_label, done, m_total, remark, terminal::width(m_file_descriptor) - 1));
}

std::string Progress_Bar::line(std::string_view label, std::uint64_t done, std::uint64_t total,
                               std::string_view remark, std::size_t width) {
    const double part =
        total == 0 ? 1.0 : std::min(1.0, static_cast<double>(done) / static_cast<double>(total));
    const std::string percent = text_of("%3d %%", static_cast<int>(part * 100.0));
    const std::string end = remark.empty() ? "" : "  " + std::string(remark);
    const std::size_t around = label.size() + std::string_view(" [] ").size() + percent.size();
    const auto bar = [&](std::size_t bar_width) {
        const auto filled = static_cast<std::size_t>(part * static_cast<double>(bar_width));
        return " [" + std::string(filled, '#') + std::string(bar_width - filled, '.') + "] " + percent;
    };
    for (const std::string& remaining : {end, std::string()}) {
        if (around + narrowest_bar + remaining.size() <= width) {
            const std::size_t room = width - around - remaining.size();
            return std::string(label) + bar(std::min(room, widest_bar)) + remaining;
        }
    }
    const std::string rest = " " + percent;
    if (width < rest.size()) {
        return percent.substr(0, width);
    }
    return std::string(label.substr(0, width - rest.size())) + rest;
}

void Progress_Bar::draw(const std::string& text) const {
    // A bar that cannot be drawn is no reason to stop the work.
    [[maybe_unused]] const int written = descriptors::write(m_file_descriptor, text.data(), text.size());
}

} // namespace Pelgar::ORBE::tools
