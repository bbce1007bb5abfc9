// with_box_driver RECORDING PROGRAM ARGUMENT...: runs a host with one box present, whose stream is the
// recording, and exits with the host's status. The driver is there as long as this program runs. A host that
// takes more than two minutes is ended, and one that does not start counts as failed.
#include "Box_Driver.h"
#include "Windows_Error.h"

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>

namespace {

using Pelgar::ORBE::test::Box_Driver;
using Pelgar::ORBE::test::require;

constexpr DWORD host_limit_ms = 120'000;
constexpr DWORD ended_by_limit = 124;
constexpr unsigned box = 0;

// Paths with blanks and plain words are all that a host is given here.
std::wstring command_line(int count, wchar_t** words) {
    std::wstring line;
    for (int i = 0; i < count; ++i) {
        line += (i == 0 ? L"\"" : L" \"") + std::wstring(words[i]) + L"\"";
    }
    return line;
}

DWORD run(std::wstring line) {
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION host{};
    require(CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup,
                           &host) != FALSE,
            "the host cannot be started");
    if (WaitForSingleObject(host.hProcess, host_limit_ms) == WAIT_TIMEOUT) {
        TerminateProcess(host.hProcess, ended_by_limit);
        WaitForSingleObject(host.hProcess, INFINITE);
    }
    DWORD status = EXIT_FAILURE;
    GetExitCodeProcess(host.hProcess, &status);
    CloseHandle(host.hThread);
    CloseHandle(host.hProcess);
    return status;
}

} // namespace

int wmain(int argc, wchar_t** argv) {
    if (argc < 3) {
        std::fprintf(stderr, "usage: with_box_driver RECORDING PROGRAM ARGUMENT...\n");
        return EXIT_FAILURE;
    }
    try {
        Box_Driver driver;
        driver.set_present_boxes(1);
        driver.play(box, argv[1]);
        return static_cast<int>(run(command_line(argc - 2, argv + 2)));
    } catch (const std::exception& exception) {
        std::fprintf(stderr, "with_box_driver: %s\n", exception.what());
        return EXIT_FAILURE;
    }
}
