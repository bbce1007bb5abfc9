// Program orbe-view. The address that the user is to open. Any thread; nothing blocks.
#pragma once

#include <string>

namespace Pelgar::ORBE::view {

inline std::string shown_address(const std::string& address, unsigned short port, const std::string& token) {
    const bool is_long = address.find(':') != std::string::npos;
    const std::string host = is_long ? "[" + address + "]" : address;
    return "http://" + host + ":" + std::to_string(port) + "/" + (token.empty() ? "" : "?token=" + token);
}

} // namespace Pelgar::ORBE::view
