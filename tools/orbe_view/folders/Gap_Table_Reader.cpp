#include "folders/Gap_Table_Reader.h"

#include "formats/Gap_Table.h"

#include <limits>

namespace Pelgar::ORBE::view {

Gap_Table_Reader::Gap_Table_Reader(const std::filesystem::path& folder)
    : m_path(folder / recorder::gap_table_file_name) {}

void Gap_Table_Reader::look() {
    std::ifstream file(m_path, std::ios::binary | std::ios::ate);
    const std::streamoff end = file ? static_cast<std::streamoff>(file.tellg()) : -1;
    if (end < 0) {
        begin_anew();
        m_problem = "cannot read '" + m_path.string() + "': lost samples look like zeros";
        return;
    }
    const auto size = static_cast<std::uint64_t>(end);
    if (size == m_size) {
        return;
    }
    if (size < m_read || m_read == 0 || !goes_on(file)) {
        begin_anew();
    }
    std::string text(static_cast<std::size_t>(size - m_read), '\0');
    file.clear();
    file.seekg(static_cast<std::streamoff>(m_read));
    file.read(text.data(), static_cast<std::streamsize>(text.size()));
    text.resize(static_cast<std::size_t>(file.gcount()));
    m_size = m_read + text.size();
    read(text);
}

// Whether what was read last still stands where it stood: a table that was mended or put in order is another.
bool Gap_Table_Reader::goes_on(std::ifstream& file) const {
    std::string line(m_last_line.size(), '\0');
    file.seekg(static_cast<std::streamoff>(m_read - line.size()));
    return file.read(line.data(), static_cast<std::streamsize>(line.size())) && line == m_last_line;
}

void Gap_Table_Reader::begin_anew() {
    m_size = 0;
    m_read = 0;
    m_line_count = 0;
    m_last_line.clear();
    m_lists.clear();
    m_problem.clear();
}

void Gap_Table_Reader::read(const std::string& text) {
    std::size_t begin = 0;
    for (std::size_t end = text.find('\n'); end != std::string::npos; end = text.find('\n', begin)) {
        read_line(std::string_view(text).substr(begin, end - begin));
        m_last_line = text.substr(begin, end + 1 - begin);
        begin = end + 1;
    }
    m_read += begin;
    for (auto& [stream, gaps] : m_misplaced) {
        const std::vector<Sample_Range> others = m_lists[stream].all();
        gaps.insert(gaps.end(), others.begin(), others.end());
        m_lists[stream] = Gap_List(std::move(gaps));
    }
    m_misplaced.clear();
    m_gaps = std::make_shared<const Gap_Lists>(m_lists);
}

void Gap_Table_Reader::read_line(std::string_view line) {
    ++m_line_count;
    const auto gap = recorder::parse_gap_line(line);
    if (gap && gap->length <= std::numeric_limits<std::uint64_t>::max() - gap->sample) {
        const Sample_Range range{gap->sample, gap->sample + gap->length};
        if (!m_lists[gap->stream].add(range)) {
            m_misplaced[gap->stream].push_back(range);
        }
    } else if (m_problem.empty() &&
               (m_line_count > 1 || std::string(line) + "\n" != recorder::gap_table_head)) {
        m_problem = "line " + std::to_string(m_line_count) + " of '" + m_path.string() +
                    "' is damaged: what it tells of looks like zeros; orbe-record repair mends the folder";
    }
}

} // namespace Pelgar::ORBE::view
