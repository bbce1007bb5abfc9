#include "Self_Test_Command.h"

#include "Exit_Codes.h"
#include "Opened_Box.h"
#include "Self_Test.h"

#include <cstdio>
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

} // namespace

Self_Test_Command::Self_Test_Command(CLI::App& app)
    : m_command(app.add_subcommand("selftest", "Run every self test of a probe port")) {
    m_command->add_option("PORT", m_port, "Port of the probe")->required()->check(CLI::Range(1, 4));
    m_command->footer(
        "Nobody may record from the box meanwhile. The probe is left in the state of the last test: "
        "opening the basestation initialises it anew.");
}

int Self_Test_Command::run(const Bench& bench) const {
    const unsigned port = m_port - 1;
    // What keeps every test from running is said once.
    Opened_Box(bench).bring_probe_up(port);
    std::printf("Self tests of port %u\n", m_port);
    std::size_t passed = 0;
    std::size_t tested = 0;
    for (const Self_Test& test : self_tests) {
        if (bench.simulation && test.needs_box) {
            std::printf("  %-7s %-40s skipped, takes a box\n", test.name, test.subject);
            continue;
        }
        ++tested;
        const std::string why = failure_of(test, bench, port);
        if (why.empty()) {
            std::printf("  %-7s %-40s pass\n", test.name, test.subject);
            ++passed;
        } else {
            std::printf("  %-7s %-40s FAIL  %s\n", test.name, test.subject, why.c_str());
        }
        std::fflush(stdout);
    }
    std::printf("%zu of %zu passed\n", passed, tested);
    return passed == tested ? exit_codes::done : exit_codes::failed;
}

} // namespace Pelgar::ORBE::tools
