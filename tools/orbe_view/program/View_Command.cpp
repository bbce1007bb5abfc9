#include "View_Command.h"

#include "Host_Source.h"
#include "Recording_Choice.h"
#include "Shown_Address.h"
#include "command_line/Number_In.h"
#include "library_run/Interrupt.h"
#include "library_run/Quiet_Library.h"
#include "library_run/Working_Directory.h"
#include "showing/Picture_Show.h"
#include "sources/Recording_Source.h"
#include "terminal/Exit_Codes.h"
#include "terminal/File_Descriptors.h"
#include "terminal/Text_Format.h"
#include "web/Access_Rules.h"
#include "web/Web_Server.h"

#include <loguru.hpp>

#include <chrono>
#include <cstdio>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <thread>

namespace Pelgar::ORBE::view {

namespace {

constexpr const char* own_address = "127.0.0.1";
constexpr unsigned highest_port = 65535;
constexpr double lowest_spike = 1.0;
constexpr double highest_spike = 10'000.0;
constexpr auto between_looks = std::chrono::milliseconds(50);

// In the directory, which is the working directory and tells the library all it has to know.
std::unique_ptr<A_Source> make_source(const View_Options& options,
                                      const tools::Working_Directory& directory) {
    if (options.recording) {
        return std::make_unique<Recording_Source>(choose_recording(*options.recording),
                                                  options.spike_microvolts);
    }
    directory.write_switch("ORBE_HOST_MODE", "both");
    if (options.simulation) {
        if (!std::ifstream(*options.simulation)) {
            throw std::runtime_error("cannot read '" + options.simulation->string() + "'");
        }
        directory.name_recording(*options.simulation);
    }
    return std::make_unique<Host_Source>(
        Host_Choice{options.simulation, options.calibration, options.spike_microvolts});
}

void say(int descriptor, const std::string& line) {
    const std::string text = "orbe-view: " + line + "\n";
    tools::descriptors::write(descriptor, text.data(), text.size());
}

// What the library prints is not for the user, who sees what goes to the descriptors.
void serve(const View_Options& options, const tools::Working_Directory& directory,
           const tools::Quiet_Library& user) {
    const std::unique_ptr<A_Source> source = make_source(options, directory);
    Picture_Show show(*source, options.may_control);
    const std::string address = options.listen.value_or(own_address);
    const std::string token = options.listen ? make_token() : std::string();
    const Web_Server server(address, options.port, token, show);
    for (const std::string& line : shown_addresses(address, server.port(), token)) {
        say(user.user_output_descriptor(), line);
    }
    std::string problem;
    while (!tools::interrupted()) {
        std::this_thread::sleep_for(between_looks);
        const std::string now = source->status().problem;
        if (now != problem && !now.empty()) {
            say(user.user_error_descriptor(), now);
        }
        problem = now;
    }
    const std::uint64_t lost = source->histories().lost_samples();
    say(user.user_output_descriptor(), std::to_string(show.pictures()) + " pictures shown, " +
                                           std::to_string(show.dropped()) + " left out; " +
                                           tools::counted(lost, "sample", "samples") + " lost in the data");
}

} // namespace

View_Command::View_Command(CLI::App& app) : m_app(app) {
    app.add_option(
        "RECORDING", m_recording,
        "A raw recording, or a folder that orbe-record writes or has written, whatever its format");
    app.add_flag("--box", m_shows_box, "Show what the box sends now; its probes are brought up for it");
    app.add_option("--simulation", m_simulation, "Play this raw recording as the box, in its time");
    app.add_option(
           "--calibration", m_calibration,
           "With --box: the folder with the probes' calibrations, as orbe-record takes it; without one, "
           "and for probes that are not in it, values are as they come")
        ->check(CLI::ExistingDirectory);
    app.add_flag(
        "--control", m_may_control,
        "Let every page that is connected stop and start the streams of the box, for all; nothing else "
        "of the box can be changed from a page");
    app.add_option(
        "--listen", m_listen,
        "Listen at this address of the machine, in numbers, instead of at its own (127.0.0.1) alone; 0.0.0.0 "
        "and :: stand for all of its addresses. The printed address then holds a token, without which nobody "
        "gets anything");
    app.add_option("--port", m_port, "The port; 0 takes one that is free")
        ->check(tools::whole_in(0, highest_port))
        ->capture_default_str();
    app.add_option("--spike", m_spike_microvolts,
                   "What counts as a spike: a fall below the channel's mean by so many microvolts")
        ->check(tools::real_in(lowest_spike, highest_spike))
        ->capture_default_str();
}

View_Options View_Command::options() const {
    View_Options options;
    const int sources =
        (m_recording.empty() ? 0 : 1) + (m_simulation.empty() ? 0 : 1) + (m_shows_box ? 1 : 0);
    if (sources != 1) {
        throw std::invalid_argument("one of RECORDING, --box and --simulation is required");
    }
    if (!m_recording.empty()) {
        options.recording = std::filesystem::absolute(m_recording);
    }
    if (!m_simulation.empty()) {
        options.simulation = std::filesystem::absolute(m_simulation);
    }
    if (!m_calibration.empty()) {
        options.calibration = std::filesystem::absolute(m_calibration);
    }
    options.may_control = m_may_control;
    if (m_app.count("--listen") != 0) {
        options.listen = m_listen;
    }
    options.port = static_cast<unsigned short>(m_port);
    options.spike_microvolts = m_spike_microvolts;
    return options;
}

int View_Command::run() const {
    const View_Options options = this->options();
    tools::catch_interrupts();
    loguru::g_stderr_verbosity = loguru::Verbosity_OFF;
    std::string failure;
    {
        const tools::Working_Directory directory("orbe-view-");
        try {
            const tools::Quiet_Library quiet(directory.output_path(), directory.output_path());
            serve(options, directory, quiet);
        } catch (const std::exception& error) {
            failure = error.what();
        }
    }
    loguru::remove_callback("ORBE.log");
    if (!failure.empty()) {
        std::fprintf(stderr, "orbe-view: %s\n", failure.c_str());
        return tools::exit_codes::failed;
    }
    return tools::exit_codes::done;
}

} // namespace Pelgar::ORBE::view
