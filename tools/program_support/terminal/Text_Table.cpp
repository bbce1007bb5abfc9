#include "terminal/Text_Table.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace Pelgar::ORBE::tools {

namespace {

constexpr std::size_t gap = 2;

} // namespace

Text_Table::Text_Table(Cells header) : m_lines{std::move(header)} {}

void Text_Table::add(Cells line) {
    m_lines.push_back(std::move(line));
}

std::string Text_Table::text(std::size_t width) const {
    const std::vector<std::size_t> widths = column_widths();
    const std::size_t needed =
        std::accumulate(widths.begin(), widths.end(), std::size_t{0}) + gap * (widths.size() - 1);
    return needed <= width ? as_table(widths) : as_list();
}

std::vector<std::size_t> Text_Table::column_widths() const {
    std::vector<std::size_t> widths(m_lines.front().size(), 0);
    for (const Cells& line : m_lines) {
        for (std::size_t i = 0; i < widths.size(); ++i) {
            widths[i] = std::max(widths[i], line.at(i).size());
        }
    }
    return widths;
}

std::string Text_Table::as_table(const std::vector<std::size_t>& widths) const {
    std::string text;
    for (const Cells& line : m_lines) {
        // The name stands to the left, what belongs to it to the right.
        text += line.front() + std::string(widths.front() - line.front().size(), ' ');
        for (std::size_t i = 1; i < widths.size(); ++i) {
            text += std::string(gap + widths[i] - line[i].size(), ' ') + line[i];
        }
        text += '\n';
    }
    return text;
}

std::string Text_Table::as_list() const {
    std::string text;
    const Cells& header = m_lines.front();
    for (std::size_t line = 1; line < m_lines.size(); ++line) {
        text += m_lines[line].front() + '\n';
        for (std::size_t i = 1; i < header.size(); ++i) {
            text += "  " + header[i] + ": " + m_lines[line][i] + '\n';
        }
    }
    return text;
}

} // namespace Pelgar::ORBE::tools
