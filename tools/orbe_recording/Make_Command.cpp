#include "Make_Command.h"

#include "Overwriting.h"
#include "command_line/Number_In.h"
#include "generator/Output_File.h"
#include "generator/Recording_Generator.h"
#include "library_run/Interrupt.h"
#include "terminal/Exit_Codes.h"
#include "terminal/Progress_Bar.h"
#include "terminal/Text_Format.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>

namespace Pelgar::ORBE::recording {

namespace {

// Bounds that keep slips of the finger from filling the disk: about eleven days, and as many blocks.
constexpr double most_seconds = 1e6;
constexpr std::uint64_t most_blocks = 16'000'000;
constexpr double highest_tone = super_frames_per_second / 2.0;

constexpr const char* footer =
    "What a host receives: the library reads a recording in pieces of 1 MiB and never reads a last piece "
    "that is "
    "shorter. It delivers the super frames of a port in blocks of 1,792 and drops the last block if it is "
    "not "
    "complete and followed by one more row. --seconds writes exactly the rows of that time, so that the end "
    "of them "
    "never reaches the host; --blocks writes what is needed for so many whole blocks.\n\n"
    "Faults: KIND[:STREAM]@POSITION[+COUNT] or KIND[:STREAM]~RATE. KIND is lost-row, bad-marker, wrong-tag, "
    "missing-flag, cut-frame or unknown-row; STREAM a port (1 to 4) or rhd; POSITION counts from 0 what the "
    "fault "
    "can strike (rows, rows that start a super frame, RHD frames) in the order of the file. Faults that "
    "strike "
    "nothing or leave nothing are refused.\n\n"
    "Examples:\n"
    "  orbe-recording make ten-seconds.bin --seconds 10 --signal tone --tone-bin 40\n"
    "  orbe-recording make mixed.bin --blocks 3 --ports 1,3 --signal spikes --signal ramp:0-95\n"
    "  orbe-recording make broken.bin --seconds 2 --fault lost-row:1@5000+3 --fault bad-marker~1e-6\n\n"
    "Exit codes: 0 the recording is written, 1 it is not (the disk, or a file of that name is there "
    "already), 2 wrong "
    "arguments, 130 stopped by the user. A file appears under its name only when it is complete.";

} // namespace

Make_Command::Make_Command(CLI::App& app)
    : m_command(
          app.add_subcommand("make", "Write a recording: the raw stream of the box, made from a seed")) {
    m_command->add_option("OUT", m_path, "The file to write")->required();
    m_command->add_flag("--force", m_force, "Overwrite a file that is there already");
    add_length_options();
    add_content_options();
    add_fault_options();
    m_command->footer(footer);
}

void Make_Command::add_length_options() {
    CLI::Option* const seconds =
        m_command->add_option("--seconds", m_seconds, "Seconds of data, 30,000 super frames each")
            ->check(tools::real_in(1.0 / super_frames_per_second, most_seconds))
            ->capture_default_str();
    m_command
        ->add_option(
            "--blocks", m_options.blocks,
            "Instead of seconds: so many blocks of 1,792 super frames reach the host from every port")
        ->check(tools::whole_in(1, most_blocks))
        ->excludes(seconds);
}

void Make_Command::add_content_options() {
    m_command->add_option("--ports", m_ports, "Ports with a probe, for example 1,3 (default: all four)")
        ->delimiter(',')
        ->check(tools::whole_in(1, port_count));
    CLI::Option* const no_rhd = m_command->add_flag("--no-rhd", m_no_rhd, "No RHD headstage");
    m_command
        ->add_option("--rhd-streams", m_options.rhd_streams,
                     "Enabled RHD data streams, 0 to 32; a host can receive ADC packets only of 0")
        ->check(tools::whole_in(0, rhd_max_streams))
        ->capture_default_str()
        ->excludes(no_rhd);
    m_command->add_option("--seed", m_options.seed, "The same seed gives the same recording")
        ->check(tools::whole_in())
        ->capture_default_str();
    m_command
        ->add_option("--signal", m_signals,
                     "What channels carry: noise (default), tone, ramp, spikes or pattern (the probe's "
                     "self-test pattern), for all channels or for some, as in tone:0-95,100; may be repeated")
        ->allow_extra_args(false)
        ->take_all();
    CLI::Option* const bin =
        m_command
            ->add_option(
                "--tone-bin", m_tone_bin,
                "Frequency of the tone as a bin of a spectrum over 1024 samples, the same in both bands")
            ->check(tools::real_in(0.0, 512.0))
            ->capture_default_str();
    m_command
        ->add_option("--tone-hz", m_tone_hertz,
                     "Frequency of the tone in Hz in the AP band; the LFP band carries a twelfth of it")
        ->check(tools::real_in(0.0, highest_tone))
        ->excludes(bin);
}

void Make_Command::add_fault_options() {
    m_command->add_option("--fault", m_faults, "Damage the recording (see below); may be repeated")
        ->allow_extra_args(false)
        ->take_all();
    m_command
        ->add_option("--extra-bytes", m_options.extra_bytes, "Zero bytes after the last row, not a whole row")
        ->check(tools::whole_in(0, piece_bytes));
}

Recording_Options Make_Command::options() const {
    Recording_Options options = m_options;
    if (options.blocks == 0) {
        options.super_frames = static_cast<std::uint64_t>(std::llround(m_seconds * super_frames_per_second));
    }
    if (!m_ports.empty()) {
        options.ports = m_ports;
        std::sort(options.ports.begin(), options.ports.end());
        options.ports.erase(std::unique(options.ports.begin(), options.ports.end()), options.ports.end());
    }
    options.rhd = !m_no_rhd;
    const bool in_hertz = m_command->count("--tone-hz") != 0;
    options.tone_frequency = in_hertz ? m_tone_hertz : frequency_of_bin(m_tone_bin);
    for (const std::string& text : m_signals) {
        options.signals.push_back(parse_signal_choice(text));
    }
    for (const std::string& text : m_faults) {
        options.faults.push_back(parse_fault(text));
    }
    return options;
}

int Make_Command::run() const {
    Recording_Generator generator(options());
    if (!m_force && !may_write({m_path})) {
        return tools::exit_codes::failed;
    }
    tools::catch_interrupts();
    Output_File file(m_path);
    std::uint64_t written = 0;
    const auto start = std::chrono::steady_clock::now();
    {
        tools::Progress_Bar progress("Writing " + m_path, generator.expected_bytes());
        for (auto part = generator.next(); !part.empty(); part = generator.next()) {
            file.write(part);
            written += part.size();
            progress.show(written);
            if (tools::interrupted()) {
                return tools::exit_codes::interrupted;
            }
        }
    }
    file.commit();
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
    std::printf("%s: %s written in %.2f s (%.2f GB/s)\n", m_path.c_str(),
                tools::counted(written, "byte", "bytes").c_str(), elapsed.count(),
                static_cast<double>(written) / 1e9 / elapsed.count());
    return tools::exit_codes::done;
}

} // namespace Pelgar::ORBE::recording
