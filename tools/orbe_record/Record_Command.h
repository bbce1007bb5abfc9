// Program orbe-record. The recording itself, from the arguments to the verdict. Main thread; blocks all the
// while.
#pragma once

#include "Record_Options.h"

#include <CLI/CLI.hpp>

#include <string>

namespace Pelgar::ORBE::recorder {

class Record_Command {
public:
    // Gives the program its arguments.
    explicit Record_Command(CLI::App& app);

    // Answers the program's exit code; throws std::invalid_argument for arguments that do not fit, and
    // std::exception when nothing was recorded.
    int run() const;

private:
    Record_Options options() const;

    const CLI::App& m_app;
    std::string m_folder;
    std::string m_simulation;
    std::string m_format = "spikeglx";
    double m_seconds = 0.0;
    int m_ap_gain = 500;
    int m_lfp_gain = 250;
    std::string m_reference = "external";
    int m_bank = 0;
    std::string m_electrodes;
    std::string m_ap_filter = "on";
    std::string m_calibration;
    bool m_no_calibration = false;
    bool m_keep = false;
};

} // namespace Pelgar::ORBE::recorder
