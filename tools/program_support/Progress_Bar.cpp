#include "Progress_Bar.h"

#include "File_Descriptors.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace Pelgar::ORBE::tools {

namespace {

constexpr std::size_t bar_width = 40;
constexpr std::chrono::milliseconds first_drawing{500};
constexpr std::chrono::milliseconds drawing_interval{100};
constexpr const char* clear_line = "\r\x1B[K";

} // namespace

Progress_Bar::Progress_Bar(std::string label, std::uint64_t total, int file_descriptor)
    : m_label(std::move(label)), m_total(total), m_file_descriptor(file_descriptor),
      m_terminal(descriptors::is_terminal(file_descriptor)),
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
    draw(clear_line + line(m_label, done, m_total, remark));
}

std::string Progress_Bar::line(std::string_view label, std::uint64_t done, std::uint64_t total,
                               std::string_view remark) {
    const double part =
        total == 0 ? 1.0 : std::min(1.0, static_cast<double>(done) / static_cast<double>(total));
    const auto filled = static_cast<std::size_t>(part * bar_width);
    const std::string percent = std::to_string(static_cast<int>(part * 100.0));
    std::string text(label);
    text += " [" + std::string(filled, '#') + std::string(bar_width - filled, '.') + "] ";
    text += std::string(3 - std::min<std::size_t>(3, percent.size()), ' ') + percent + " %";
    if (!remark.empty()) {
        text += "  ";
        text += remark;
    }
    return text;
}

void Progress_Bar::draw(const std::string& text) const {
    // A bar that cannot be drawn is no reason to stop the work.
    [[maybe_unused]] const int written = descriptors::write(m_file_descriptor, text.data(), text.size());
}

} // namespace Pelgar::ORBE::tools
