#include "Detached_Process.h"

#include <windows.h>

#include <stdexcept>

namespace Pelgar::ORBE::host {

int run_detached(std::string command) {
    STARTUPINFOA start{};
    start.cb = sizeof start;
    start.dwFlags = STARTF_USESTDHANDLES; // and there are none in it
    PROCESS_INFORMATION process{};
    if (CreateProcessA(nullptr, command.data(), nullptr, nullptr, FALSE, DETACHED_PROCESS, nullptr, nullptr,
                       &start, &process) == FALSE) {
        throw std::runtime_error("the detached process does not start");
    }
    WaitForSingleObject(process.hProcess, INFINITE);
    DWORD exit_code = 0;
    GetExitCodeProcess(process.hProcess, &exit_code);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    return static_cast<int>(exit_code);
}

bool is_detached() {
    const HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
    return output == nullptr || output == INVALID_HANDLE_VALUE;
}

} // namespace Pelgar::ORBE::host
