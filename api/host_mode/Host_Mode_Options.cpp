#include "host_mode/Host_Mode_Options.h"

#include "adapter/File_Switch.h"
#include "common/Parse_Number.h"

#include <filesystem>
#include <sstream>
#include <stdexcept>
#include <system_error>
#include <vector>

namespace Pelgar::ORBE::npoe_adapter {

namespace {

std::vector<std::string> words_of(const std::string& line) {
    std::istringstream stream(line);
    std::vector<std::string> words;
    for (std::string word; stream >> word;) {
        words.push_back(word);
    }
    return words;
}

// Three numbers and nothing else, or std::invalid_argument.
Firmware_Version parse_version(const std::string& text) {
    const bool has_other_characters = text.find_first_not_of("0123456789.") != std::string::npos;
    std::istringstream stream(text);
    std::vector<std::string> parts;
    for (std::string part; std::getline(stream, part, '.');) {
        parts.push_back(part);
    }
    try {
        if (!has_other_characters && parts.size() == 3 && !text.ends_with('.')) {
            return {parse_int(parts[0]), parse_int(parts[1]), parse_int(parts[2])};
        }
    } catch (const std::logic_error&) {
        // Said below.
    }
    throw std::invalid_argument("\"" + text + "\" is no firmware version (such as 2.0.169)");
}

} // namespace

Host_Mode_Options parse_host_mode(const std::string& line) {
    const std::vector<std::string> words = words_of(line);
    Host_Mode_Options options;
    if (words.empty()) {
        return options;
    }
    if (words[0] == "pxi") {
        options.devices = Host_Mode_Options::Devices::pxi;
        if (words.size() == 3) {
            options.basestation = parse_version(words[1]);
            options.connect_card = parse_version(words[2]);
        } else if (words.size() != 1) {
            throw std::invalid_argument("behind \"pxi\" stand two firmware versions or none");
        }
    } else if (words[0] == "both") {
        options.devices = Host_Mode_Options::Devices::both;
    } else if (words[0] != "usb") {
        throw std::invalid_argument("\"" + words[0] + "\" is none of usb, pxi, both");
    }
    return options;
}

std::optional<Host_Mode_Options> read_host_mode_switch() {
    std::error_code failure;
    if (!std::filesystem::exists(host_mode_switch, failure)) {
        return std::nullopt;
    }
    return parse_host_mode(probe_file_switch(host_mode_switch).first_line);
}

} // namespace Pelgar::ORBE::npoe_adapter
