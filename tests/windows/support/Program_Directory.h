// Test support, Windows. Where the running program lies, and so everything that was built with it. Any
// thread.
#pragma once

#include <filesystem>

namespace Pelgar::ORBE::test {

// Throws std::system_error.
std::filesystem::path program_directory();

} // namespace Pelgar::ORBE::test
