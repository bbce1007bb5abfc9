#include "folders/Gap_Table_Reader.h"

#include "formats/Gap_Table.h"

#include <fstream>
#include <limits>
#include <string_view>
#include <utility>
#include <vector>

namespace Pelgar::ORBE::view {

Gap_Table_Reader::Gap_Table_Reader(const std::filesystem::path& folder)
    : m_path(folder / recorder::gap_table_file_name) {}

void Gap_Table_Reader::look() {
    std::ifstream file(m_path, std::ios::binary | std::ios::ate);
    const std::streamoff size = file ? static_cast<std::streamoff>(file.tellg()) : -1;
    if (size < 0) {
        m_problem = "cannot read '" + m_path.string() + "': lost samples look like zeros";
        m_size = 0;
        return;
    }
    if (static_cast<std::uint64_t>(size) == m_size) {
        return;
    }
    std::string text(static_cast<std::size_t>(size), '\0');
    file.seekg(0);
    file.read(text.data(), size);
    text.resize(static_cast<std::size_t>(file.gcount()));
    read(text);
    m_size = text.size();
}

void Gap_Table_Reader::read(const std::string& text) {
    std::map<std::string, std::vector<Sample_Range>> ranges;
    std::string problem;
    std::size_t number = 0;
    std::size_t begin = 0;
    for (std::size_t end = text.find('\n'); end != std::string::npos; end = text.find('\n', begin)) {
        const std::string_view line = std::string_view(text).substr(begin, end - begin);
        begin = end + 1;
        ++number;
        const auto gap = recorder::parse_gap_line(line);
        if (gap && gap->length <= std::numeric_limits<std::uint64_t>::max() - gap->sample) {
            ranges[gap->stream].push_back({gap->sample, gap->sample + gap->length});
        } else if (problem.empty() && (number > 1 || text.compare(0, begin, recorder::gap_table_head) != 0)) {
            problem = "line " + std::to_string(number) + " of '" + m_path.string() +
                      "' is damaged: what it tells of looks like zeros; orbe-record repair mends the folder";
        }
    }
    auto gaps = std::make_shared<Gap_Lists>();
    for (auto& [stream, of_stream] : ranges) {
        gaps->emplace(stream, Gap_List(std::move(of_stream)));
    }
    m_gaps = std::move(gaps);
    m_problem = problem;
}

} // namespace Pelgar::ORBE::view
