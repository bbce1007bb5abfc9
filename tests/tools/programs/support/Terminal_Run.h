// Test support: runs one of the programs as a user does who sits at a terminal.
#pragma once

#include <functional>
#include <string>

namespace Pelgar::ORBE::test {

struct Terminal {
    std::string input; // what the user types
    unsigned columns = 80;
    const char* name = "xterm"; // what TERM says
    // The user closes the terminal as soon as this answers true; empty: never.
    std::function<bool()> close_when;
};

struct Terminal_Run {
    int exit_code = -1;
    std::string screen; // all that was written to the terminal, the user's input with it
};

// Runs a shell command in the working directory and waits for its end.
Terminal_Run run_on_terminal(const std::string& command, const Terminal& terminal);

// The longest line of the screen; a line that is drawn anew counts as one more.
std::size_t longest_line(const std::string& screen);

} // namespace Pelgar::ORBE::test
