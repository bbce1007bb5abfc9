#include "Record_Command.h"

#include "Opened_Box.h"
#include "Probe_Set_Up.h"
#include "Record_Program.h"
#include "Recorder.h"
#include "command_line/Number_In.h"
#include "command_line/Version.h"
#include "description/Description_File.h"
#include "library_run/Interrupt.h"
#include "library_run/Quiet_Library.h"
#include "library_run/Working_Directory.h"
#include "terminal/Exit_Codes.h"
#include "terminal/Terminal.h"
#include "terminal/Text_Format.h"

#include <loguru.hpp>

#include <algorithm>
#include <array>
#include <cstdio>
#include <optional>
#include <stdexcept>
#include <system_error>
#include <utility>
#include <vector>

namespace Pelgar::ORBE::recorder {

namespace {

namespace exit_codes = tools::exit_codes;

constexpr double shortest_recording = 0.001;
constexpr double longest_recording = 1e6;
constexpr const char* raw_file_name = "raw_data.bin";
// In the order of their numbers in descriptions.
constexpr std::array<const char*, 5> references{"external", "tip", "bank0", "bank1", "bank2"};

// Makes the folder that must not be there, and takes it away again unless a recording has begun in it.
class New_Folder {
public:
    explicit New_Folder(std::filesystem::path path) : m_path(std::move(path)) {
        if (std::filesystem::exists(m_path)) {
            throw std::runtime_error("'" + m_path.string() +
                                     "' is there already, and nothing is overwritten");
        }
        std::filesystem::create_directories(m_path);
    }

    ~New_Folder() {
        std::error_code ignored;
        if (!std::filesystem::exists(m_path / description_file_name, ignored)) {
            std::filesystem::remove_all(m_path, ignored);
        }
    }

    New_Folder(const New_Folder&) = delete;
    New_Folder& operator=(const New_Folder&) = delete;

private:
    std::filesystem::path m_path;
};

// The library in a directory of its own, which tells it all it has to know.
void prepare_library(const tools::Working_Directory& directory, const Record_Options& options) {
    directory.write_switch("ORBE_HOST_MODE", "both");
    if (options.simulation) {
        directory.name_recording(*options.simulation);
    }
    if (options.format == raw_format) {
        directory.write_switch("ORBE_RAW_CAPTURE", (options.folder / raw_file_name).string());
    }
}

Recording_Description describe(const Record_Options& options, const Opened_Box& box) {
    Recording_Description description;
    description.source = options.simulation ? options.simulation->filename().string() : "box";
    description.program_version = tools::version_text("orbe-record");
    for (const int port : box.ports()) {
        description.probes.push_back(
            set_up_probe(Opened_Box::probe_slot, port, options.probes, options.simulation.has_value()));
    }
    if (description.probes.empty()) {
        throw std::runtime_error("there is no probe on any port");
    }
    description.adc.emplace();
    return description;
}

// What is made of the raw stream later is corrected with it.
void add_gain_calibrations(const Record_Options& options, const Recording_Description& description) {
    for (const Probe_Description& probe : description.probes) {
        if (probe.is_calibrated) {
            const auto file = gain_calibration_file(*options.probes.calibration, probe.serial_number);
            std::filesystem::copy_file(file, options.folder / file.filename());
        }
    }
}

void print_summary(const Record_Options& options, const Record_Result& result) {
    std::printf("%s: %.3f GB\n", options.folder.string().c_str(), static_cast<double>(result.bytes) / 1e9);
    for (const Live_Line& line : result.streams) {
        std::printf("%s: %.3f s, %s lost\n", line.stream.c_str(), line.seconds,
                    tools::counted(line.lost, "sample", "samples").c_str());
    }
    if (result.is_short) {
        std::puts("The recording that was played ended before the time was over.");
    }
}

int verdict_on(const Record_Result& result, const Record_Options& options) {
    if (!result.write_problem.empty()) {
        std::fprintf(stderr,
                     "orbe-record: the recording ended because it could not be written: %s\n"
                     "orbe-record: what was written stays; 'orbe-record repair %s' makes it whole\n",
                     result.write_problem.c_str(), options.folder.string().c_str());
        return record_exit_codes::not_written;
    }
    if (!result.loss.empty()) {
        std::fprintf(stderr, "orbe-record: %s\n", result.loss.c_str());
    }
    if (result.lost_bytes != 0) {
        std::fprintf(stderr, "orbe-record: the disk was too slow: %s of the stream are lost\n",
                     tools::counted(result.lost_bytes, "byte", "bytes").c_str());
    }
    if (result.lost_something()) {
        std::fprintf(stderr, "orbe-record: something is missing in the recording\n");
        return record_exit_codes::lost;
    }
    return exit_codes::done;
}

} // namespace

Record_Command::Record_Command(CLI::App& app) : m_app(app) {
    app.add_option("FOLDER", m_folder, "The folder to make; it must not be there yet");
    app.add_option("--format", m_format, "How to write: spikeglx, open-ephys, or raw (the box's own stream)")
        ->check(CLI::IsMember({"spikeglx", "open-ephys", raw_format}))
        ->capture_default_str();
    app.add_option("--seconds", m_seconds, "Record so long (default: until Ctrl-C)")
        ->check(tools::real_in(shortest_recording, longest_recording));
    app.add_option("--simulation", m_simulation, "Play this raw recording instead of a box");
    app.add_option("--ap-gain", m_ap_gain, "Gain of the AP band")
        ->check(CLI::IsMember(gains))
        ->capture_default_str();
    app.add_option("--lfp-gain", m_lfp_gain, "Gain of the LFP band")
        ->check(CLI::IsMember(gains))
        ->capture_default_str();
    app.add_option(
           "--reference", m_reference,
           "Reference of all channels: external, tip, or the shank's electrode of a bank: bank0, bank1, "
           "bank2")
        ->check(CLI::IsMember(std::vector<std::string>(references.begin(), references.end())))
        ->capture_default_str();
    CLI::Option* const bank =
        app.add_option("--bank", m_bank,
                       "Bank of all channels, 0 to 2; 2 stands for the 384 electrodes farthest from the tip")
            ->check(tools::whole_in(0, Electrode_Map::bank_count - 1))
            ->capture_default_str();
    app.add_option("--electrodes", m_electrodes,
                   "CSV file that gives each channel its electrode: a line 'channel,electrode' or "
                   "'port,channel,electrode', and below it a line a channel; electrode -1 disconnects")
        ->excludes(bank);
    app.add_option("--ap-filter", m_ap_filter, "High pass at 300 Hz in the AP band: on or off")
        ->check(CLI::IsMember({"on", "off"}))
        ->capture_default_str();
    app.add_option("--calibration", m_calibration,
                   "Folder with the probes' calibrations: <serial>/<serial>_ADCCalibration.csv and "
                   "<serial>/<serial>_gainCalValues.csv")
        ->check(CLI::ExistingDirectory);
    app.add_flag("--no-calibration", m_no_calibration,
                 "Record probes without a calibration too, which a box is otherwise not asked for");
    app.add_flag("--keep", m_keep, "Keep the library's log also when all went well");
}

Record_Options Record_Command::options() const {
    if (m_folder.empty()) {
        throw std::invalid_argument("FOLDER is required");
    }
    Record_Options options;
    options.folder = std::filesystem::absolute(m_folder).lexically_normal();
    if (options.folder.filename().empty()) {
        options.folder = options.folder.parent_path(); // its name is that of files, too
    }
    options.format = m_format;
    if (m_app.count("--seconds") != 0) {
        options.seconds = m_seconds;
    }
    if (!m_simulation.empty()) {
        options.simulation = std::filesystem::absolute(m_simulation);
    }
    options.probes.ap_gain = m_ap_gain;
    options.probes.lfp_gain = m_lfp_gain;
    options.probes.reference =
        static_cast<int>(std::find(references.begin(), references.end(), m_reference) - references.begin());
    options.probes.ap_filter = m_ap_filter == "on";
    options.probes.electrodes =
        m_electrodes.empty() ? Electrode_Map::of_bank(m_bank) : Electrode_Map::of_file(m_electrodes);
    if (!m_calibration.empty()) {
        options.probes.calibration = std::filesystem::absolute(m_calibration);
    }
    options.probes.may_lack_calibration = m_no_calibration;
    return options;
}

int Record_Command::run() const {
    const Record_Options options = this->options();
    if (options.simulation && !std::ifstream(*options.simulation)) {
        throw std::runtime_error("cannot read '" + options.simulation->string() + "'");
    }
    tools::catch_interrupts();
    const New_Folder folder(options.folder);
    tools::Working_Directory directory("orbe-record-");
    prepare_library(directory, options);
    loguru::g_stderr_verbosity = loguru::Verbosity_OFF;
    std::optional<Record_Result> result;
    std::string failure;
    try {
        const tools::Quiet_Library quiet(directory.output_path(), directory.output_path());
        Opened_Box box;
        Recording_Description description = describe(options, box);
        if (options.format == raw_format) {
            add_gain_calibrations(options, description);
        }
        Recorder recorder(box, options, std::move(description), quiet.user_error_descriptor());
        result = recorder.run();
        box.close();
    } catch (const std::exception& error) {
        failure = error.what();
    }
    loguru::remove_callback("ORBE.log");
    int exit_code = exit_codes::failed;
    if (result) {
        print_summary(options, *result);
        exit_code = verdict_on(*result, options);
    } else {
        std::fprintf(stderr, "orbe-record: %s\n", failure.c_str());
    }
    if (m_keep || exit_code != exit_codes::done) {
        directory.keep();
        std::fprintf(stderr, "orbe-record: the library's log is in '%s'\n",
                     directory.path().string().c_str());
    }
    return exit_code;
}

} // namespace Pelgar::ORBE::recorder
