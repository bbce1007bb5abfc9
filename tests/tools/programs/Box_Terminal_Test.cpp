// Runs orbe-box on the simulated box as a user does at a terminal.
#include "Program_Run.h"
#include "Terminal_Run.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace Pelgar::ORBE::test;

TEST(BoxTerminal, OutputThatIsLostIsAFailure) {
    for (const std::string arguments : {"--simulation info", "--help", "--version", "selftest --help"}) {
        const Program_Run run = run_program("(" ORBE_BOX_PROGRAM " " + arguments + " >/dev/full)");
        EXPECT_EQ(run.exit_code, 1) << arguments;
        EXPECT_TRUE(run.errors.starts_with("orbe-box: standard output cannot be written")) << run.errors;
    }
}

TEST(BoxTerminal, NoLineIsBrokenByTheTerminal) {
    Terminal terminal;
    for (const unsigned columns : {80U, 50U}) {
        terminal.columns = columns;
        for (const std::string arguments : {"--simulation info", "--help", "info --help", "selftest --help",
                                            "flash --help", "hwinfo --help"}) {
            const Terminal_Run run = run_on_terminal(ORBE_BOX_PROGRAM " " + arguments, terminal);
            EXPECT_EQ(run.exit_code, 0) << run.screen;
            EXPECT_LE(longest_line(run.screen), columns) << run.screen;
        }
    }
}

} // namespace
