// Program orbe-recording. "export": writes what a host receives of a raw recording in a format that the lab's
// tools open.
#pragma once

#include "decoding/Recording_Export.h"
#include "description/Recording_Description.h"

#include <CLI/CLI.hpp>

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace Pelgar::ORBE::recording {

class Export_Command {
public:
    // Adds the command and its arguments. The command must live as long as the app.
    explicit Export_Command(CLI::App& app);

    bool chosen() const { return m_command->parsed(); }

    // Answers the program's exit code: 0 written, 1 not, 2 wrong arguments or a file that is no recording,
    // 130 stopped by the user.
    int run() const;

private:
    int write(const recorder::Export_Source& source) const;
    recorder::Export_Source source() const;
    recorder::Recording_Description describe(const recorder::Raw_Content& content) const;
    recorder::Recording_Description default_description(const recorder::Raw_Content& content) const;
    void pick_ports(recorder::Recording_Description& description, const recorder::Raw_Content& content) const;
    void pick_time(recorder::Recording_Description& description) const;
    void apply_settings(recorder::Recording_Description& description) const;
    std::optional<std::filesystem::path> gain_file(const recorder::Probe_Description& probe) const;

    CLI::App* m_command;
    std::string m_raw;
    std::string m_folder;
    std::string m_format = "spikeglx";
    std::vector<int> m_ports;
    std::string m_channels;
    double m_from = 0.0;
    std::optional<double> m_seconds;
    std::optional<int> m_ap_gain;
    std::optional<int> m_lfp_gain;
    std::optional<double> m_adc_range;
    std::string m_calibration;
    bool m_uncalibrated = false;
};

} // namespace Pelgar::ORBE::recording
