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

    // Whether the FPGA runs the design that serves probes; when it does not and `may_switch`, reboots it into
    // that design, which takes 10 s.
    bool runs_neuropixels_design(bool may_switch);

    // Powers the probe ports and waits up to 5 s for a headstage. Throws std::runtime_error with what the
    // library says when none comes.
    void power_ports();

    // Brings the box, switching its design if need be, and the probe on a port (index 0..3) up. Throws as
    // above.
    void bring_probe_up(unsigned port);

    // Does `operation` on the controller with the library's lines going to the files, and returns its result.
    template <typename Operation>
    auto quietly(Operation operation) {
        return m_bench.run.quietly([&] { return operation(*m_controller); });
    }

    // The controller, for operations within Library_Run::quietly.
    ORBE_Controller_Library& controller() { return *m_controller; }

private:
    void release();

    const Bench& m_bench;
    std::unique_ptr<ORBE_Controller_Library> m_controller;
};

} // namespace Pelgar::ORBE::tools
