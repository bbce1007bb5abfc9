#include "formats/Gap_Table.h"

#include "description/Whole_File.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <numeric>
#include <sstream>
#include <vector>

namespace Pelgar::ORBE::recorder {

namespace {

std::optional<std::uint64_t> number_of(std::string_view text) {
    std::uint64_t number = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    return result.ec == std::errc() && result.ptr == text.data() + text.size() ? std::optional(number)
                                                                               : std::nullopt;
}

} // namespace

std::optional<Gap_Line> parse_gap_line(std::string_view line) {
    const std::size_t first = line.find(',');
    const std::size_t second = first == std::string_view::npos ? first : line.find(',', first + 1);
    if (second == std::string_view::npos) {
        return std::nullopt;
    }
    const auto sample = number_of(line.substr(first + 1, second - first - 1));
    const auto length = number_of(line.substr(second + 1));
    if (!sample || !length) {
        return std::nullopt;
    }
    return Gap_Line{std::string(line.substr(0, first)), *sample, *length};
}

Gap_Table::Gap_Table(const std::filesystem::path& folder) : m_path(folder / gap_table_file_name) {
    errno = 0;
    m_file.open(m_path, std::ios::binary | std::ios::trunc);
    write(gap_table_head);
}

void Gap_Table::add(const std::string& stream, std::uint64_t sample, std::uint64_t length) {
    const std::lock_guard lock(m_mutex);
    write(stream + "," + std::to_string(sample) + "," + std::to_string(length) + "\n");
}

// Those of one stream are in order already.
void Gap_Table::finish() {
    const std::lock_guard lock(m_mutex);
    m_file.close();
    std::istringstream text(read_file(m_path));
    std::vector<std::string> lines;
    for (std::string line; std::getline(text, line);) {
        lines.push_back(line + "\n");
    }
    const auto stream_of = [](const std::string& line) {
        return std::string_view(line).substr(0, line.find(','));
    };
    std::vector<std::string> ordered = lines;
    std::stable_sort(ordered.begin() + 1, ordered.end(),
                     [&](const std::string& left, const std::string& right) {
                         return stream_of(left) < stream_of(right);
                     });
    if (ordered != lines) {
        write_file(m_path, std::accumulate(ordered.begin(), ordered.end(), std::string()));
    }
}

std::uint64_t Gap_Table::size() const {
    const std::lock_guard lock(m_mutex);
    return m_size;
}

void Gap_Table::write(const std::string& text) {
    errno = 0;
    if (!(m_file << text << std::flush)) {
        throw file_error(m_path, "cannot write");
    }
    m_size += text.size();
}

} // namespace Pelgar::ORBE::recorder
