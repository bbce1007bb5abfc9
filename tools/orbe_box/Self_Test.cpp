#include "Self_Test.h"

#include "common/Waiting.h"
#include "terminal/Text_Format.h"

#include <chrono>

namespace Pelgar::ORBE::tools {

namespace {

// How long the link carries pseudo-random bits.
constexpr std::chrono::seconds prbs_duration{1};

template <bool (ORBE_Controller_Library::*operation)(unsigned)>
bool run(ORBE_Controller_Library& controller, unsigned port, std::string& /*why*/) {
    return (controller.*operation)(port);
}

bool run_prbs(ORBE_Controller_Library& controller, unsigned port, std::string& why) {
    if (!controller.bist_start_PBRS(port)) {
        return false;
    }
    wait_for(prbs_duration);
    int errors = 0;
    if (!controller.bist_stop_PBRS(port, &errors)) {
        return false;
    }
    if (errors != 0) {
        why = counted(static_cast<unsigned>(errors), "bit error", "bit errors") + " in a second";
    }
    return errors == 0;
}

} // namespace

const std::array<Self_Test, 7> self_tests{{
    {"HB", "link to the headstage", "not locked", true, &run<&ORBE_Controller_Library::bist_HB>},
    {"PRBS", "pseudo-random bits over the link", "the headstage did not count", true, &run_prbs},
    {"I2CMM", "registers of the probe", "a register does not keep what is written", true,
     &run<&ORBE_Controller_Library::bist_IIC>},
    {"EEPROM", "EEPROMs of headstage and probe", "an EEPROM does not read the same twice", true,
     &run<&ORBE_Controller_Library::bist_Eeproms>},
    {"SR", "shift registers of the probe", "the probe does not hold what was shifted in", false,
     &run<&ORBE_Controller_Library::bist_Probe_SR>},
    {"PSB", "test pattern over the probe serial bus", "the test pattern does not arrive", false,
     &run<&ORBE_Controller_Library::bist_PSB>},
    {"Signal", "test tone through every channel", "a channel does not carry the tone of 1150 to 1300 Hz",
     false, &run<&ORBE_Controller_Library::bist_Signal>},
}};

} // namespace Pelgar::ORBE::tools
