#include "Self_Test_Command.h"

#include "Opened_Box.h"
#include "Self_Test.h"
#include "command_line/Number_In.h"
#include "library_run/Time_Limit.h"
#include "terminal/Exit_Codes.h"
#include "terminal/File_Descriptors.h"
#include "terminal/Standard_Output.h"
#include "terminal/Text_Format.h"

#include <chrono>
#include <cstdio>
#include <functional>
#include <stdexcept>
#include <string>

namespace Pelgar::ORBE::tools {

namespace {

// Why the test fails on a port (index 0..3); empty when it passes. Every test gets a box that has just been
// opened and a probe that has just been initialised, so that none suffers from what another has left behind.
std::string failure_of(const Self_Test& test, const Bench& bench, unsigned port) {
    try {
        Opened_Box box(bench);
        box.bring_probe_up(port);
        std::string why;
        bench.run.take_error();
        const bool good = box.quietly([&](ORBE_Controller_Library& controller) {
            if (!bench.recordings.empty()) {
                controller.set_self_test_directory(bench.recordings);
            }
            return test.run(controller, port, why);
        });
        const std::string error = bench.run.take_error();
        if (good) {
            return {};
        }
        if (why.empty()) {
            why = error;
        }
        return why.empty() ? test.failure : std::string(test.failure) + " (" + why + ")";
    } catch (const std::runtime_error& error) {
        return error.what();
    }
}

// Shows what is being done, so that the user sees how far the tests are.
void begin_line(const char* name, const char* subject) {
    std::printf("  %-7s %-40s ", name, subject);
    flush_standard_output();
}

void end_line(const std::string& verdict) {
    std::puts(verdict.c_str());
    flush_standard_output();
}

// Does `step`, with the library's lines going to the files. A box that does not answer at all ends the
// program: the verdict of the step is then the last thing that is said.
void run_step(const Bench& bench, const std::function<void()>& step) {
    const std::chrono::milliseconds limit = bench.environment.self_test_limit;
    bench.run.quietly_with_user([&](const Quiet_Library& user) {
        run_within(limit, step, [&] {
            const auto seconds = static_cast<unsigned>(limit / std::chrono::seconds(1));
            const std::string verdict =
                "FAIL  no answer within " + counted(seconds, "second", "seconds") + "\n";
            const std::string where =
                "orbe-box: the box does not come back; the library's log and what it printed "
                "are in '" +
                bench.run.path().string() + "'\n";
            descriptors::write(user.user_output_descriptor(), verdict.data(), verdict.size());
            descriptors::write(user.user_error_descriptor(), where.data(), where.size());
        });
    });
}

} // namespace

Self_Test_Command::Self_Test_Command(CLI::App& app)
    : m_command(app.add_subcommand("selftest", "Run every self test of a probe port")) {
    m_command->add_option("PORT", m_port, "Port of the probe")->required()->check(whole_in(1, 4));
    m_command->footer(
        "Nobody may record from the box meanwhile. The probe is left in the state of the last test: "
        "opening the basestation initialises it anew.\n\n"
        "Exit codes: 0 every test has passed, 1 not every one or the box does not come up or not come back, "
        "2 wrong "
        "arguments.");
}

int Self_Test_Command::run(const Bench& bench) const {
    const unsigned port = m_port - 1;
    std::printf("Self tests of port %u\n", m_port);
    // What keeps every test from running is said once.
    begin_line("Start", "box, headstage and probe come up");
    try {
        run_step(bench, [&] { Opened_Box(bench).bring_probe_up(port); });
    } catch (const std::runtime_error&) {
        end_line("FAIL");
        throw;
    }
    end_line("ready");
    std::size_t passed = 0;
    std::size_t tested = 0;
    for (const Self_Test& test : self_tests) {
        begin_line(test.name, test.subject);
        if (bench.simulation && test.needs_box) {
            end_line("skipped, takes a box");
            continue;
        }
        ++tested;
        std::string why;
        run_step(bench, [&] { why = failure_of(test, bench, port); });
        passed += why.empty() ? 1U : 0U;
        end_line(why.empty() ? "pass" : "FAIL  " + why);
    }
    std::printf("%zu of %zu passed\n", passed, tested);
    return passed == tested ? exit_codes::done : exit_codes::failed;
}

} // namespace Pelgar::ORBE::tools
