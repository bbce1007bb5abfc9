#include "Terminal_Run.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <stdexcept>

#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

namespace Pelgar::ORBE::test {

namespace {

constexpr int poll_milliseconds = 5;

// Everything up to the end of the program, or of the terminal.
std::string read_screen(int descriptor, const std::function<bool()>& close_when) {
    std::string screen;
    std::array<char, 4096> part{};
    while (!close_when || !close_when()) {
        pollfd something{descriptor, POLLIN, 0};
        if (poll(&something, 1, poll_milliseconds) == 0) {
            continue;
        }
        const ssize_t count = read(descriptor, part.data(), part.size());
        if (count <= 0) {
            break; // the last program has closed the terminal
        }
        screen.append(part.data(), static_cast<std::size_t>(count));
    }
    return screen;
}

} // namespace

Terminal_Run run_on_terminal(const std::string& command, const Terminal& terminal) {
    const std::string line = "exec " + command;
    winsize size{};
    size.ws_col = static_cast<unsigned short>(terminal.columns);
    size.ws_row = 24;
    int descriptor = -1;
    const pid_t child = forkpty(&descriptor, nullptr, nullptr, &size);
    if (child < 0) {
        throw std::runtime_error("no terminal");
    }
    if (child == 0) {
        setenv("TERM", terminal.name, 1);
        execl("/bin/sh", "sh", "-c", line.c_str(), nullptr);
        _exit(127);
    }
    Terminal_Run run;
    if (write(descriptor, terminal.input.data(), terminal.input.size()) >= 0) {
        run.screen = read_screen(descriptor, terminal.close_when);
    }
    close(descriptor);
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    run.exit_code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return run;
}

std::size_t longest_line(const std::string& screen) {
    std::size_t longest = 0;
    std::size_t length = 0;
    for (std::size_t i = 0; i < screen.size(); ++i) {
        if (screen[i] == '\r' || screen[i] == '\n') {
            length = 0;
        } else if (screen.compare(i, 3, "\x1B[K") == 0) {
            i += 2;
        } else {
            longest = std::max(longest, ++length);
        }
    }
    return longest;
}

} // namespace Pelgar::ORBE::test
