// Program orbe-view. The whole of it, from the arguments to the exit code. Main thread; blocks until the user
// stops it.
#pragma once

#include "View_Options.h"

#include <CLI/CLI.hpp>

#include <string>

namespace Pelgar::ORBE::view {

class View_Command {
public:
    // Gives the program its arguments.
    explicit View_Command(CLI::App& app);

    // Answers the program's exit code; throws std::invalid_argument for arguments that do not fit, and
    // std::exception when there is nothing to show.
    int run() const;

private:
    View_Options options() const;

    const CLI::App& m_app;
    std::string m_recording;
    std::string m_simulation;
    std::string m_calibration;
    std::string m_listen;
    bool m_shows_box = false;
    unsigned m_port = 8384;
    bool m_may_control = false;
    double m_spike_microvolts = 100.0;
};

} // namespace Pelgar::ORBE::view
