#include "Opened_Box.h"

#include <stdexcept>
#include <string>

namespace Pelgar::ORBE::tools {

namespace {

[[noreturn]] void fail(Library_Run& run, const std::string& what) {
    const std::string why = run.take_error();
    throw std::runtime_error(why.empty() ? what : what + ": " + why);
}

} // namespace

Opened_Box::Opened_Box(const Bench& bench) : m_bench(bench) {
    m_controller = bench.run.quietly([&] { return bench.environment.make_controller(bench.simulation); });
    try {
        if (!quietly([](ORBE_Controller_Library& controller) { return controller.open(); })) {
            fail(bench.run, "no box is connected");
        }
    } catch (...) {
        release();
        throw;
    }
}

Opened_Box::~Opened_Box() {
    release();
}

bool Opened_Box::runs_neuropixels_design(bool may_switch) {
    return quietly([may_switch](ORBE_Controller_Library& controller) {
        return controller.check_and_switch_firmware_if_nec(may_switch);
    });
}

void Opened_Box::power_ports() {
    if (!quietly([](ORBE_Controller_Library& controller) { return controller.pre_init(true); })) {
        fail(m_bench.run, "no headstage's link locks");
    }
}

void Opened_Box::bring_probe_up(unsigned port) {
    if (!runs_neuropixels_design(true)) {
        fail(m_bench.run, "the FPGA could not be made to run the Neuropixels design");
    }
    power_ports();
    const bool up = quietly([port](ORBE_Controller_Library& controller) {
        return controller.probe_init_part_1(port) &&
               controller.probe_init_part_2(port, E_ORBE_Init_Config::full);
    });
    if (!up) {
        fail(m_bench.run, "the probe does not come up");
    }
}

void Opened_Box::release() {
    m_bench.run.quietly([this] { m_controller.reset(); });
}

} // namespace Pelgar::ORBE::tools
