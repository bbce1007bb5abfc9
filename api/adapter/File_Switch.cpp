#include "adapter/File_Switch.h"

#include "common/Console.h"

#include <cstddef>
#include <fstream>
#include <string_view>

namespace Pelgar::ORBE::npoe_adapter {

namespace {

constexpr const char* marker_file = "ORBE_DFGMZ_ADAPTER_SI";

constexpr std::string_view utf8_mark = "\xEF\xBB\xBF";
constexpr std::string_view utf16_low_byte_first_mark = "\xFF\xFE";
constexpr std::string_view utf16_high_byte_first_mark = "\xFE\xFF";

// `low` and `high` say where in its pair each byte of a character is.
std::string ascii_of_utf16(std::string_view text, std::size_t low, std::size_t high) {
    std::string ascii;
    for (; text.size() >= 2; text.remove_prefix(2)) {
        const char character = text[low];
        const bool is_ascii = text[high] == 0 && static_cast<unsigned char>(character) < 0x80;
        ascii += is_ascii ? character : '?';
    }
    return ascii;
}

std::string without_byte_order_mark(const std::string& line) {
    if (line.starts_with(utf8_mark)) {
        return line.substr(utf8_mark.size());
    }
    if (line.starts_with(utf16_low_byte_first_mark)) {
        return ascii_of_utf16(line.substr(utf16_low_byte_first_mark.size()), 0, 1);
    }
    if (line.starts_with(utf16_high_byte_first_mark)) {
        return ascii_of_utf16(line.substr(utf16_high_byte_first_mark.size()), 1, 0);
    }
    return line;
}

// Blanks that nobody sees, and the carriage return of a file that was written on another system.
void cut_trailing_blanks(std::string& line) {
    line.erase(line.find_last_not_of(" \t\r") + 1);
}

} // namespace

File_Switch probe_file_switch(const std::string& name) {
    std::ofstream(marker_file, std::ios::trunc) << "Test";

    std::ifstream file(name, std::ios::binary);
    if (!file) {
        console::out(name, " not present in working directory\n");
        return {};
    }
    console::out(name, " file present in working directory\n");
    File_Switch found{{}, true};
    std::getline(file, found.first_line);
    found.first_line = without_byte_order_mark(found.first_line);
    cut_trailing_blanks(found.first_line);
    return found;
}

} // namespace Pelgar::ORBE::npoe_adapter
