// Tools, what all programs share. A table for people that never breaks: where it is wider than the terminal
// its lines are written out, cell by cell. Any thread; never blocks.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace Pelgar::ORBE::tools {

class Text_Table {
public:
    using Cells = std::vector<std::string>;

    explicit Text_Table(Cells header);

    // One cell a column; the first names the line.
    void add(Cells line);

    std::string text(std::size_t width) const;

private:
    std::vector<std::size_t> column_widths() const;
    std::string as_table(const std::vector<std::size_t>& widths) const;
    std::string as_list() const;

    std::vector<Cells> m_lines; // the header is the first
};

} // namespace Pelgar::ORBE::tools
