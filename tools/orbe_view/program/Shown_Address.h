// Program orbe-view. The addresses that the user is to open. Any thread; asks the system for its own.
#pragma once

#include "Machine_Addresses.h"

#include <string>
#include <vector>

namespace Pelgar::ORBE::view {

inline std::string shown_address(const std::string& address, unsigned short port, const std::string& token) {
    const bool is_long = address.find(':') != std::string::npos;
    const std::string host = is_long ? "[" + address + "]" : address;
    return "http://" + host + ":" + std::to_string(port) + "/" + (token.empty() ? "" : "?token=" + token);
}

// For each a line. Where the server listens at all addresses of the machine: the one for a browser here, and
// those for the others.
inline std::vector<std::string> shown_addresses(const std::string& address, unsigned short port,
                                                const std::string& token) {
    if (!is_any_address(address)) {
        return {shown_address(address, port, token)};
    }
    const bool is_long = address.find(':') != std::string::npos;
    std::string others;
    for (const std::string& other : machine_addresses(address)) {
        others += (others.empty() ? "" : " or ") + shown_address(other, port, token);
    }
    return {shown_address(is_long ? "::1" : "127.0.0.1", port, token),
            others.empty()
                ? std::string("other machines do not reach this one: it has no such address in a network")
                : "from other machines: " + others};
}

} // namespace Pelgar::ORBE::view
