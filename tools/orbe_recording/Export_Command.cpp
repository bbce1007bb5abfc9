#include "Export_Command.h"

#include "command_line/Number_In.h"
#include "command_line/Version.h"
#include "description/Description_File.h"
#include "formats/Make_Writer.h"
#include "library_run/Interrupt.h"
#include "library_run/Quiet_Library.h"
#include "numbers/Parse_Unsigned.h"
#include "terminal/Exit_Codes.h"
#include "terminal/Progress_Bar.h"
#include "terminal/Text_Format.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <sstream>
#include <stdexcept>
#include <system_error>

namespace Pelgar::ORBE::recording {

namespace {

using namespace recorder;

constexpr int written = 0;
constexpr int not_written = 1;
constexpr int unreadable = 2;

constexpr double most_seconds = 1e6;
constexpr std::uint64_t samples_per_lfp_sample = 12;
constexpr const char* messages_file_name = "decoder.txt";

constexpr const char* footer =
    "The files hold what orbe-record writes when the box, or the simulation, sends this recording: the same "
    "samples, "
    "bit for bit, with the same zeros where something is lost. The probes' settings come from the file "
    "orbe_recording.json beside the recording; without it they are gains of 500 and 250, bank 0 and no "
    "calibration. "
    "What the decoder has to say of damage is in decoder.txt.\n\n"
    "Examples:\n"
    "  orbe-recording export raw_data.bin my_run\n"
    "  orbe-recording export raw_data.bin one_minute --format open-ephys --ports 1,2 --from 60 --seconds "
    "60\n\n"
    "Exit codes: 0 everything is written, 1 it is not (the disk, or a recording is there already), 2 wrong "
    "arguments "
    "or a file that is no recording, 130 stopped by the user; what is written by then opens.";

std::uint64_t sample_at(double seconds, double (*round)(double)) {
    const double groups = round(seconds * ap_sample_rate / static_cast<double>(samples_per_lfp_sample));
    return static_cast<std::uint64_t>(groups) * samples_per_lfp_sample;
}

int channel_of_text(const std::string& text) {
    const std::uint64_t number = parse_unsigned(text, "channel");
    if (number >= recorder::channel_count) {
        throw std::invalid_argument("there is no channel " + text + ": they are 0 to 383");
    }
    return static_cast<int>(number);
}

// "0-95,100": ascending, each at most once.
std::vector<int> channels_of_text(const std::string& text) {
    std::vector<int> channels;
    std::istringstream parts(text);
    for (std::string part; std::getline(parts, part, ',');) {
        const std::size_t dash = part.find('-');
        const int first = channel_of_text(part.substr(0, dash));
        const int last = dash == std::string::npos ? first : channel_of_text(part.substr(dash + 1));
        if (last < first) {
            throw std::invalid_argument("'" + part + "' ends before it begins");
        }
        for (int channel = first; channel <= last; ++channel) {
            channels.push_back(channel);
        }
    }
    std::sort(channels.begin(), channels.end());
    channels.erase(std::unique(channels.begin(), channels.end()), channels.end());
    return channels;
}

// The best that is known of a recording without a description.
Start_Time last_written(const std::filesystem::path& raw) {
    const auto age = std::filesystem::file_time_type::clock::now() - std::filesystem::last_write_time(raw);
    return std::chrono::floor<std::chrono::milliseconds>(
        std::chrono::system_clock::now() -
        std::chrono::duration_cast<std::chrono::system_clock::duration>(age));
}

} // namespace

Export_Command::Export_Command(CLI::App& app)
    : m_command(
          app.add_subcommand("export", "Write a recording's samples in a format that the lab's tools open")) {
    m_command->add_option("RAW", m_raw, "The recording")->required();
    m_command->add_option("FOLDER", m_folder, "The folder to write, which must not hold a recording")
        ->required();
    m_command->add_option("--format", m_format, "spikeglx or open-ephys")
        ->check(CLI::IsMember({"spikeglx", "open-ephys"}))
        ->capture_default_str();
    m_command->add_option("--ports", m_ports, "Ports of the probes to write, for example 1,3 (default: all)")
        ->delimiter(',')
        ->check(tools::whole_in(1, 4));
    m_command->add_option("--channels", m_channels, "Channels to write, for example 0-95,100 (default: all)");
    m_command->add_option("--from", m_from, "Seconds from the beginning of the recording to leave out")
        ->check(tools::real_in(0.0, most_seconds))
        ->capture_default_str();
    m_command->add_option("--seconds", m_seconds, "Seconds to write (default: all)")
        ->check(tools::real_in(0.001, most_seconds));
    m_command->add_option("--ap-gain", m_ap_gain, "The AP gain of all channels, in place of what is known")
        ->check(CLI::IsMember({50, 125, 250, 500, 1000, 1500, 2000, 3000}));
    m_command->add_option("--lfp-gain", m_lfp_gain, "The LFP gain of all channels, in place of what is known")
        ->check(CLI::IsMember({50, 125, 250, 500, 1000, 1500, 2000, 3000}));
    m_command->add_option("--adc-range", m_adc_range, "The range of the ADC inputs in volts: 2.5, 5 or 10")
        ->check(CLI::IsMember({2.5, 5.0, 10.0}));
    CLI::Option* const calibration = m_command->add_option(
        "--calibration", m_calibration,
        "Folder with the probes' files <serial number>_gainCalValues.csv (default: that of the recording)");
    m_command->add_flag("--uncalibrated", m_uncalibrated, "Leave the gain calibration out")
        ->excludes(calibration);
    m_command->footer(footer);
}

int Export_Command::run() const {
    tools::catch_interrupts();
    Export_Source wanted;
    try {
        wanted = source();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "orbe-recording: %s\n", error.what());
        return unreadable;
    }
    try {
        return write(wanted);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "orbe-recording: %s\n", error.what());
        return not_written;
    }
}

int Export_Command::write(const Export_Source& source) const {
    const std::filesystem::path folder(m_folder);
    const auto writer = make_writer(format_of(m_format).value(), folder, source.description);
    bool is_complete = false;
    {
        const tools::Quiet_Library quiet(folder / messages_file_name, folder / messages_file_name);
        tools::Progress_Bar progress("Exporting " + m_raw, std::filesystem::file_size(source.raw),
                                     quiet.user_error_descriptor());
        is_complete = export_recording(source, *writer, [&](std::uint64_t bytes) {
            progress.show(bytes);
            return !tools::interrupted();
        });
    }
    for (std::size_t stream = 0; stream < writer->stream_count(); ++stream) {
        std::printf("%s: %s, %llu lost\n", writer->stream_name(stream).c_str(),
                    tools::counted(writer->samples(stream), "sample", "samples").c_str(),
                    tools::wide(writer->lost_samples(stream)));
    }
    return is_complete ? written : tools::exit_codes::interrupted;
}

Export_Source Export_Command::source() const {
    Export_Source source;
    source.raw = m_raw;
    source.description = describe(raw_content(source.raw));
    for (Probe_Description& probe : source.description.probes) {
        source.gain_files.push_back(gain_file(probe));
        probe.is_calibrated = source.gain_files.back().has_value();
    }
    return source;
}

Recording_Description Export_Command::describe(const Raw_Content& content) const {
    const std::filesystem::path beside = std::filesystem::absolute(m_raw).parent_path();
    Recording_Description description = std::filesystem::exists(beside / description_file_name)
                                            ? read_description(beside).description
                                            : default_description(content);
    description.source = std::filesystem::path(m_raw).filename().string();
    description.program_version = tools::version_text("orbe-recording");
    pick_ports(description, content);
    pick_time(description);
    apply_settings(description);
    return description;
}

Recording_Description Export_Command::default_description(const Raw_Content& content) const {
    Recording_Description description;
    description.start_time = last_written(m_raw);
    for (const int port : content.ports) {
        description.probes.push_back(default_probe(port));
    }
    if (content.has_adc) {
        description.adc = ADC_Description{};
    }
    return description;
}

void Export_Command::pick_ports(Recording_Description& description, const Raw_Content& content) const {
    for (const int port : m_ports) {
        if (std::find(content.ports.begin(), content.ports.end(), port) == content.ports.end()) {
            throw std::invalid_argument("there is no data of port " + std::to_string(port));
        }
    }
    std::erase_if(description.probes, [&](const Probe_Description& probe) {
        return !m_ports.empty() && std::find(m_ports.begin(), m_ports.end(), probe.port) == m_ports.end();
    });
    if (!content.has_adc) {
        description.adc.reset();
    }
}

// Whole LFP samples, so that both bands begin at the same moment.
void Export_Command::pick_time(Recording_Description& description) const {
    description.first_sample = sample_at(m_from, std::floor);
    if (m_seconds) {
        description.end_sample = std::max(sample_at(m_from + *m_seconds, std::ceil),
                                          description.first_sample + samples_per_lfp_sample);
    }
}

void Export_Command::apply_settings(Recording_Description& description) const {
    if (!m_channels.empty()) {
        description.saved_channels = channels_of_text(m_channels);
    }
    for (Probe_Description& probe : description.probes) {
        for (Channel_Description& channel : probe.channels) {
            channel.ap_gain = m_ap_gain.value_or(channel.ap_gain);
            channel.lfp_gain = m_lfp_gain.value_or(channel.lfp_gain);
        }
        probe.is_calibrated = probe.is_calibrated && !m_uncalibrated;
    }
    if (m_adc_range && description.adc) {
        description.adc->range_volts = *m_adc_range;
    }
}

// Either directly in the folder or in one of the probe's own.
std::optional<std::filesystem::path> Export_Command::gain_file(const Probe_Description& probe) const {
    if (!probe.is_calibrated && m_calibration.empty()) {
        return std::nullopt;
    }
    const std::filesystem::path folder = m_calibration.empty()
                                             ? std::filesystem::absolute(m_raw).parent_path()
                                             : std::filesystem::path(m_calibration);
    const std::string number = std::to_string(probe.serial_number);
    const std::string name = number + "_gainCalValues.csv";
    for (const auto& path : {folder / number / name, folder / name}) {
        if (std::filesystem::exists(path)) {
            return path;
        }
    }
    throw std::runtime_error("there is no " + name + " in '" + folder.string() +
                             "' (--calibration says where it is, " + "--uncalibrated leaves it out)");
}

} // namespace Pelgar::ORBE::recording
