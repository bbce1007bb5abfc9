// Tools, what all programs share. Which version of the library a program was built with. Any thread.
#pragma once

#include <string>

namespace Pelgar::ORBE::tools {

// "orbe-play 3.62.1".
inline std::string version_text(const std::string& program) {
    return program + " " + ORBE_PROGRAM_VERSION;
}

} // namespace Pelgar::ORBE::tools
