#include "repair/Gap_Table_Repair.h"

#include "description/Whole_File.h"
#include "formats/Gap_Table.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <string_view>

namespace Pelgar::ORBE::recorder {

namespace {

std::optional<std::uint64_t> number_of(std::string_view text) {
    std::uint64_t number = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    return result.ec == std::errc() && result.ptr == text.data() + text.size() ? std::optional(number)
                                                                               : std::nullopt;
}

// The line as it should be; empty for one that goes.
std::string repaired(const std::string& line, const Stream_Lengths& lengths) {
    const std::size_t first = line.find(',');
    const std::size_t second = first == std::string::npos ? first : line.find(',', first + 1);
    if (second == std::string::npos) {
        return {};
    }
    const std::string stream = line.substr(0, first);
    const auto sample = number_of(std::string_view(line).substr(first + 1, second - first - 1));
    const auto length = number_of(std::string_view(line).substr(second + 1));
    const auto known = lengths.find(stream);
    if (!sample || !length || known == lengths.end() || *sample >= known->second) {
        return {};
    }
    const std::uint64_t there = std::min(*length, known->second - *sample);
    return stream + "," + std::to_string(*sample) + "," + std::to_string(there) + "\n";
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
