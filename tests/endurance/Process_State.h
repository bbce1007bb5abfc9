// Endurance test. What the process has taken of the machine at a moment. Reads /proc and the working
// directory.
#pragma once

#include <cstdint>

namespace Pelgar::ORBE::test {

struct Process_State {
    std::uint64_t resident_bytes = 0;
    std::uint64_t handles = 0;
    std::uint64_t threads = 0;
    std::uint64_t log_bytes = 0;     // of ORBE.log
    std::uint64_t printed_bytes = 0; // of what standard output is led into

    // `printed` names that file.
    static Process_State now(const char* printed);
};

} // namespace Pelgar::ORBE::test
