// Program orbe-play: plays a raw recording through the exported API and, on request, compares every packet
// with what the recording holds. Knows nothing of the library but its public header. Exit codes: 0 everything
// arrived (and was equal), 1 not so, 2 wrong arguments, 130 stopped by the user.
#include "Paced_Recording.h"
#include "Play_Report.h"
#include "Player.h"
#include "command_line/Number_In.h"
#include "command_line/Program.h"
#include "library_run/Interrupt.h"
#include "library_run/Quiet_Library.h"
#include "library_run/Working_Directory.h"
#include "terminal/Exit_Codes.h"
#include "terminal/Terminal.h"
#include "terminal/Text_Format.h"

#include <cstdio>
#include <fstream>
#include <optional>
#include <string>

namespace {

using namespace Pelgar::ORBE::recording;
namespace tools = Pelgar::ORBE::tools;

namespace exit_codes = tools::exit_codes;

constexpr int output_descriptor = 1;
constexpr double longest_stall = 3600.0;
constexpr const char* overflow_message = "MT_NP_PXI_Queue overflow";

constexpr const char* footer =
    "The recording is played in a fresh working directory. What the library prints goes to a file beside it "
    "unless "
    "--no-quiet-library is given; both are removed when all went well, and named when not.\n\n"
    "The library keeps 501 packets of each kind and drops what is not taken in time. A piece of 1 MiB brings "
    "about "
    "250 ADC packets when four ports are recorded, but 970 when only one is: those depend on a fast "
    "machine.\n\n"
    "A damaged recording is played as well, and what is damaged is told; --verify compares with what the "
    "library must "
    "make of it.\n\n"
    "Exit codes: 0 every packet came and, with --verify, was equal; 1 not so, or there is no packet in the "
    "recording; "
    "2 wrong arguments; 130 stopped by the user.";

// What is wrong, in one line; empty when nothing is.
std::string problem_of(const Player& player, bool played, bool verify) {
    if (!played) {
        return player.problem();
    }
    if (!player.good()) {
        return verify ? "what came is not what the recording holds" : "more came than the recording holds";
    }
    return {};
}

// Whether the library says in its output that it dropped packets that nobody took in time.
bool dropped_packets(const std::filesystem::path& output) {
    std::ifstream file(output);
    std::string line;
    while (std::getline(file, line)) {
        if (line.find(overflow_message) != std::string::npos) {
            return true;
        }
    }
    return false;
}

int play(Play_Options options, bool paced, bool quiet, bool keep) {
    // What cannot be read is told before anything is begun; the library has but one answer for all reasons.
    Piece_Reader{options.recording};
    tools::Working_Directory directory("orbe-play-");
    directory.name_recording(options.recording);
    std::optional<Paced_Recording> pipe;
    if (paced) {
        pipe.emplace(options.recording, directory.path() / "recording");
        directory.name_recording(pipe->pipe());
        options.paced = &*pipe;
    }
    Player player(options);
    bool played = false;
    {
        std::optional<tools::Quiet_Library> redirection;
        if (quiet) {
            redirection.emplace(directory.output_path(), directory.output_path());
        }
        played = player.play(redirection ? redirection->user_error_descriptor() : 2);
    }
    const std::size_t width = tools::terminal::width(output_descriptor);
    if (player.seconds() > 0.0) { // packets were waited for
        for (std::size_t i = 0; i < player.identities().size(); ++i) {
            const std::string identity =
                "Probe " + std::to_string(i + 1) + " is up: " + player.identities()[i];
            std::puts(tools::wrapped(identity, width, 2).c_str());
        }
        std::fputs(report(player, options, width).c_str(), stdout);
    }
    const std::string problem = problem_of(player, played, options.verify);
    if (!problem.empty()) {
        directory.keep();
        std::fprintf(stderr, "orbe-play: %s\n", problem.c_str());
        std::fprintf(stderr, "orbe-play: the library's log is in '%s'%s%s%s\n",
                     directory.path().string().c_str(), quiet ? ", what it printed is in '" : "",
                     quiet ? directory.output_path().string().c_str() : "", quiet ? "'" : "");
        if (dropped_packets(directory.path() / "ORBE.log")) {
            std::fprintf(stderr,
                         "orbe-play: the library dropped packets because they were not taken in time: "
                         "this machine is too busy to play in real time%s\n",
                         paced ? "" : " (try --paced)");
        }
        return tools::interrupted() ? exit_codes::interrupted : exit_codes::failed;
    }
    if (keep) {
        directory.keep();
        std::printf("Working directory kept: %s\n", directory.path().string().c_str());
    }
    std::puts(options.verify ? "All packets arrived and are equal." : "All packets arrived.");
    return exit_codes::done;
}

} // namespace

int main(int argc, char** argv) {
    tools::Program program("orbe-play",
                           "Plays a raw recording of the ORBE acquisition box through the Neuropixels API");
    CLI::App& app = program.app();
    std::string recording;
    Play_Options options;
    double stall = options.stall_limit.count();
    bool quiet = true;
    bool keep = false;
    bool paced = false;
    app.add_option("RECORDING", recording, "The raw recording")->required();
    app.add_flag("--verify", options.verify, "Compare every sample, time stamp and status word");
    app.add_option("--stall", stall, "Give up after so many seconds without a new packet")
        ->check(tools::real_in(0.1, longest_stall))
        ->capture_default_str();
    app.add_flag("--quiet-library,!--no-quiet-library", quiet,
                 "Send what the library prints to a file (default)");
    app.add_flag(
        "--paced", paced,
        "Give the library the recording through a pipe, a piece at a time when the packets before it have "
        "been taken: nothing is lost on a busy machine, which otherwise drops packets");
    app.add_flag("--keep", keep, "Keep the working directory also when all went well");
    app.footer(footer);
    return program.run(argc, argv, [&] {
        tools::catch_interrupts();
        options.recording = std::filesystem::absolute(recording);
        options.stall_limit = std::chrono::duration<double>(stall);
        return play(options, paced, quiet, keep);
    });
}
