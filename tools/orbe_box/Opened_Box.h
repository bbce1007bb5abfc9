// Program orbe-box. The box that a command works on, from the connection to the end of the command.
#pragma once

#include "Bench.h"

#include <memory>

namespace Pelgar::ORBE::tools {

class Opened_Box {
public:
    // Connects to the box. Throws std::runtime_error with what the library says when there is none.
    explicit Opened_Box(const Bench& bench);
    // Closes the connection; what the library prints at that goes where the rest went.
    ~Opened_Box();
    Opened_Box(const Opened_Box&) = delete;
    Opened_Box& operator=(const Opened_Box&) = delete;

    // Brings the probe ports up: makes the FPGA run the Neuropixels design, powers the ports and waits up to
    // 5 s for a headstage. Throws std::runtime_error with what the library says when that fails.
    void bring_ports_up();

    // Brings the ports up and initialises the probe on one of them (index 0..3). Throws as above.
    void bring_probe_up(unsigned port);

    // Does `operation` on the controller with the library's lines going to the files, and returns its result.
    template <typename Operation>
    auto quietly(Operation operation) {
        return m_bench.run.quietly([&] { return operation(*m_controller); });
    }

    // The controller, for operations within Library_Run::quietly.
    ORBE_Controller_Library& controller() { return *m_controller; }

private:
    const Bench& m_bench;
    std::unique_ptr<ORBE_Controller_Library> m_controller;
};

} // namespace Pelgar::ORBE::tools
