#include "Program_Directory.h"

#include "Windows_Error.h"

#include <array>

namespace Pelgar::ORBE::test {

std::filesystem::path program_directory() {
    std::array<wchar_t, 1024> program{};
    const DWORD length = GetModuleFileNameW(nullptr, program.data(), static_cast<DWORD>(program.size()));
    require(length > 0 && length < program.size(), "the program does not know its own file");
    return std::filesystem::path(program.data()).parent_path();
}

} // namespace Pelgar::ORBE::test
