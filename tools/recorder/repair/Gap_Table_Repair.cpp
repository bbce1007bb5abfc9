#include "repair/Gap_Table_Repair.h"

#include "description/Whole_File.h"
#include "formats/Gap_Table.h"

#include <algorithm>
#include <optional>

namespace Pelgar::ORBE::recorder {

namespace {

// The line as it should be; empty for one that goes.
std::string repaired(const std::string& line, const Stream_Lengths& lengths) {
    const std::optional<Gap_Line> gap = parse_gap_line(line);
    const auto known = gap ? lengths.find(gap->stream) : lengths.end();
    if (known == lengths.end() || gap->sample >= known->second) {
        return {};
    }
    const std::uint64_t there = std::min(gap->length, known->second - gap->sample);
    return gap->stream + "," + std::to_string(gap->sample) + "," + std::to_string(there) + "\n";
}

} // namespace

void repair_gap_table(const std::filesystem::path& folder, const Stream_Lengths& lengths,
                      Folder_Repair& repair) {
    const std::filesystem::path path = folder / gap_table_file_name;
    std::string table = gap_table_head;
    const std::string text = std::filesystem::exists(path) ? read_file(path) : std::string();
    std::size_t begin = text.find('\n');
    begin = begin == std::string::npos ? text.size() : begin + 1;
    for (std::size_t end = text.find('\n', begin); end != std::string::npos; end = text.find('\n', begin)) {
        table += repaired(text.substr(begin, end - begin), lengths);
        begin = end + 1;
    }
    repair.make_content(path, table);
}

} // namespace Pelgar::ORBE::recorder
