#include "terminal/Standard_Output.h"

#include "terminal/Exit_Codes.h"

#include <cerrno>
#include <cstdio>
#include <iostream>
#include <string>
#include <system_error>

#if !defined(_WIN32)
#include <csignal>
#include <fcntl.h>
#endif

namespace Pelgar::ORBE::tools {

namespace {

bool g_failed = false;
int g_reason = 0; // the first failure's, as far as it is known

} // namespace

void guard_standard_streams() {
#if !defined(_WIN32)
    std::signal(SIGPIPE, SIG_IGN);
    for (const int descriptor : {0, 1, 2}) {
        if (fcntl(descriptor, F_GETFD) == -1) {
            // The lowest free number is the one that is looked at. Opened the wrong way round, it fails
            // whoever uses it, as the closed one would have.
            open("/dev/null", descriptor == 0 ? O_WRONLY : O_RDONLY);
        }
    }
#endif
}

void flush_standard_output() {
    errno = 0;
    std::cout.flush();
    const bool good = std::fflush(stdout) == 0 && std::ferror(stdout) == 0 && std::cout.good();
    if (!good) {
        note_lost_output(errno);
    }
}

void note_lost_output(int reason) {
    if (!g_failed) {
        g_failed = true;
        g_reason = reason;
    }
}

int finish_standard_output(const char* program, int exit_code) {
    flush_standard_output();
    if (!g_failed) {
        return exit_code;
    }
    const std::string reason = g_reason == 0 ? "" : ": " + std::generic_category().message(g_reason);
    std::fprintf(stderr, "%s: standard output cannot be written%s\n", program, reason.c_str());
    return exit_code == exit_codes::done ? exit_codes::failed : exit_code;
}

} // namespace Pelgar::ORBE::tools
