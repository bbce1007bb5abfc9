// Test support, raw capture. What the working directory holds.
#pragma once

#include <fstream>
#include <sstream>
#include <string>

namespace Pelgar::ORBE::test {

inline std::string content_of(const std::string& name) {
    std::ostringstream content;
    content << std::ifstream(name, std::ios::binary).rdbuf();
    return content.str();
}

inline void write_file(const std::string& name, const std::string& content) {
    std::ofstream(name, std::ios::binary | std::ios::trunc) << content;
}

} // namespace Pelgar::ORBE::test
