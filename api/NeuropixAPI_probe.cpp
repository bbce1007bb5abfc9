// Layer: façade. Opening, initialising, configuring and identifying probes. Called on the host's threads, one
// at a time from here on, because all ports share one link and its answers carry no tag.
#include "NeuropixAPI.h"

#include "adapter/Adapter_State.h"
#include "adapter/File_Switch.h"
#include "adapter/Sweep_Log_Throttle.h"
#include "common/Console.h"
#include "common/Copy_Text.h"
#include "common/Parse_Number.h"
#include "common/Waiting.h"
#include "modes/Current_Mode.h"

#include <loguru.hpp>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <limits>
#include <stdexcept>
#include <string>

namespace Neuropixels {

namespace {

using namespace Pelgar::ORBE;
using namespace Pelgar::ORBE::npoe_adapter;

constexpr auto i2c_poll_wait = std::chrono::milliseconds(1000);
// A host with this slot number reads the headstage without having opened the port.
constexpr int self_opening_slot = 16;
constexpr const char* default_headstage_part_number = "NP2_HS_30";

std::atomic<bool> g_i2c_comm_initialised{false};

unsigned bounded_length(size_t length) {
    return static_cast<unsigned>(std::min<size_t>(length, std::numeric_limits<unsigned>::max()));
}

const char* shown(const char* text) {
    return text == nullptr ? "" : text;
}

E_ORBE_Init_Config read_init_mode() {
    const File_Switch found = probe_file_switch(init_mode_switch);
    if (!found.present) {
        return E_ORBE_Init_Config::full;
    }
    try {
        return static_cast<E_ORBE_Init_Config>(parse_int(found.first_line));
    } catch (const std::logic_error&) {
        console::err("Exception catched at init config integer conversion\n");
        return E_ORBE_Init_Config::full;
    }
}

// Whether there is a port whose opening readHSPN can wait for.
bool may_be_opened(int portID) {
    const auto controller = current_controller();
    return controller && controller->get_current_error_level() != Error_Level::driver_open &&
           port_index(portID) < np_port_count;
}

NP_ErrorCode open_port(const char* name, int slotID, int portID) {
    return forward_to_port(name, slotID, portID, [&](auto& controller) {
        const bool linked = controller.probe_init_part_1(port_index(portID));
        g_i2c_comm_initialised = true;
        return linked;
    });
}

// Calls an operation that answers a text.
template <typename Operation>
std::string ask_controller(const char* name, Operation operation) {
    std::string answer;
    forward_to_controller(name, [&](auto& controller) {
        answer = operation(controller);
        return true;
    });
    return answer;
}

} // namespace

NP_ErrorCode openPort(int slotID, int portID) {
    LOG_SCOPE_F(INFO, "openPort");
    LOG_F(INFO, "slotID : %d, portID : %d", slotID, portID);
    return open_port("openPort", slotID, portID);
}

NP_ErrorCode closePort(int slotID, int portID) {
    LOG_SCOPE_F(INFO, "closePort");
    LOG_F(INFO, "SlotID : %d, portID : %d", slotID, portID);
    return SUCCESS;
}

NP_ErrorCode openProbe(int slotID, int portID, int dockID) {
    LOG_SCOPE_F(INFO, "openProbe");
    LOG_F(INFO, "slotID : %d, portID : %d, dockID : %d", slotID, portID, dockID);
    return Result_Answer("openProbe")(current_mode().check_port(slotID, portID));
}

NP_ErrorCode closeProbe(int slotID, int portID, int /*dockID*/) {
    LOG_SCOPE_F(INFO, "closeProbe");
    LOG_F(INFO, "slotID : %d, portID : %d", slotID, portID);
    return SUCCESS;
}

NP_ErrorCode init(int slotID, int portID, int dockID) {
    LOG_SCOPE_F(INFO, "init");
    LOG_F(INFO, "slotID : %d, portID : %d, dockID : %d", slotID, portID, dockID);
    const E_ORBE_Init_Config mode = read_init_mode();
    LOG_F(INFO, "Using init config : %d", static_cast<int>(mode));
    return forward_to_port("init", slotID, portID, [&](auto& controller) {
        return controller.probe_init_part_2(port_index(portID), mode);
    });
}

NP_ErrorCode selectElectrode(int slotID, int portID, int dockID, int channel, int shank, int bank) {
    static Sweep_Log_Throttle throttle;
    const int verbosity = throttle.verbosity_for(channel);
    VLOG_SCOPE_F(verbosity, "selectElectrode");
    VLOG_F(verbosity, "slotID : %d, portID : %d, dockID : %d", slotID, portID, dockID);
    VLOG_F(verbosity, "channel=%d, bank=%d", channel, bank);
    return forward_to_port("selectElectrode", slotID, portID, [&](auto& controller) {
        return controller.selectElectrode(port_index(portID), channel, shank, bank);
    });
}

NP_ErrorCode setGain(int slotID, int portID, int dockID, int channel, int ap_gain, int lfp_gain) {
    static Sweep_Log_Throttle throttle;
    const int verbosity = throttle.verbosity_for(channel);
    VLOG_SCOPE_F(verbosity, "setGain");
    VLOG_F(verbosity, "slotID : %d, portID : %d, dockID : %d", slotID, portID, dockID);
    VLOG_F(verbosity, "channel=%d, ap_gain=%d, lfp_gain=%d", channel, ap_gain, lfp_gain);
    return forward_to_port("setGain", slotID, portID, [&](auto& controller) {
        return controller.setGain(port_index(portID), channel, ap_gain, lfp_gain);
    });
}

NP_ErrorCode setReference(int slotID, int portID, int dockID, int channel, int shank,
                          channelreference_t reference, int intRefElectrodeBank) {
    static Sweep_Log_Throttle throttle;
    const int verbosity = throttle.verbosity_for(channel);
    VLOG_SCOPE_F(verbosity, "setReference");
    VLOG_F(verbosity, "slotID : %d, portID : %d, dockID : %d", slotID, portID, dockID);
    VLOG_F(verbosity, "channel=%d,reference=%d,bank=%d", channel, reference, intRefElectrodeBank);
    return forward_to_port("setReference", slotID, portID, [&](auto& controller) {
        return controller.setReference(port_index(portID), channel, shank, reference, intRefElectrodeBank);
    });
}

NP_ErrorCode setAPCornerFrequency(int slotID, int portID, int dockID, int channel, bool disableHighPass) {
    static Sweep_Log_Throttle throttle;
    const int verbosity = throttle.verbosity_for(channel);
    VLOG_SCOPE_F(verbosity, "setAPCornerFrequency");
    VLOG_F(verbosity, "slotID : %d, portID : %d, dockID : %d", slotID, portID, dockID);
    VLOG_F(verbosity, "channel=%d, disableHighPass : %d", channel, disableHighPass);
    return forward_to_port("setAPCornerFrequency", slotID, portID, [&](auto& controller) {
        return controller.setAPCornerFrequency(port_index(portID), channel, disableHighPass);
    });
}

NP_ErrorCode getGain(int slotID, int portID, int /*dockID*/, int channel, int* APgainselect,
                     int* LFPgainselect) {
    LOG_SCOPE_F(INFO, "getGain");
    // A call that fails leaves the host's numbers alone, and they are what is logged.
    int ap_gain = read_from_host(APgainselect);
    int lfp_gain = read_from_host(LFPgainselect);
    const auto result = forward_to_port("getGain", slotID, portID, [&](auto& controller) {
        return current_mode().read_gain(controller, port_index(portID), channel, &ap_gain, &lfp_gain);
    });
    LOG_F(INFO, "portID : %d, APgainselect : %d, LFPgainselect : %d", portID, ap_gain, lfp_gain);
    write_to_host(APgainselect, ap_gain);
    write_to_host(LFPgainselect, lfp_gain);
    return result;
}

NP_ErrorCode clear_all_electrode_to_bank_assignments(int slotID, int portID) {
    LOG_SCOPE_F(INFO, "clear_all_electrode_to_bank_assignments");
    return forward_to_port("clear_all_electrode_to_bank_assignments", slotID, portID, [&](auto& controller) {
        controller.clear_all_electrode_to_bank_assignments(port_index(portID));
        return true;
    });
}

NP_ErrorCode setADCCalibration(int slotID, int portID, const char* filename) {
    LOG_SCOPE_F(INFO, "setADCCalibration");
    VLOG_F(1, "slotID : %d, portID : %d, filename : %s", slotID, portID, shown(filename));
    return forward_to_port("setADCCalibration", slotID, portID, [&](auto& controller) {
        return controller.setADCCalibration(port_index(portID), filename);
    });
}

NP_ErrorCode setGainCalibration(int slotID, int portID, int /*dockID*/, const char* filename) {
    LOG_SCOPE_F(INFO, "setGainCalibration");
    VLOG_F(1, "slotID : %d, portID : %d", slotID, portID);
    return forward_to_port("setGainCalibration", slotID, portID, [&](auto& controller) {
        return controller.setGainCalibration(port_index(portID), filename);
    });
}

NP_ErrorCode writeProbeConfiguration(int slotID, int portID, int dockID, bool readcheck) {
    LOG_SCOPE_F(INFO, "writeProbeConfiguration");
    LOG_F(INFO, "slotID : %d, portID : %d, dockID : %d, readcheck : %d", slotID, portID, dockID, readcheck);
    return forward_to_port("writeProbeConfiguration", slotID, portID, [&](auto& controller) {
        return controller.writeProbeConfiguration(port_index(portID), readcheck);
    });
}

NP_ErrorCode setOPMODE(int slotID, int portID, int dockID, probe_opmode_t mode) {
    static constexpr std::array<const char*, 3> names{"RECORDING", "CALIBRATION", "DIGITAL_TEST"};
    LOG_SCOPE_F(INFO, "setOPMODE");
    const auto number = static_cast<unsigned>(mode);
    LOG_F(INFO, "opmode : %s, slotID : %d, portID : %d, dockID : %d",
          number < names.size() ? names[number] : "?", slotID, portID, dockID);
    return SUCCESS;
}

NP_ErrorCode probe_set_bist_mode(int portID, bool enable) {
    LOG_SCOPE_F(INFO, "probe_set_bist_mode");
    VLOG_F(1, "portID : %d, enable : %d", portID, enable);
    return forward_over_i2c("probe_set_bist_mode", [&](auto& controller) {
        controller.set_bist_signal_mode(port_index(portID), enable);
        return true;
    });
}

NP_ErrorCode readProbePN(int slotID, int portID, int dockID, char* pn, size_t len) {
    LOG_SCOPE_F(INFO, "readProbePN");
    LOG_F(INFO, "slotID : %d, portID : %d, dockID : %d", slotID, portID, dockID);
    if (pn != nullptr && len != 0) {
        pn[0] = '\0';
    }
    const auto result = forward_to_port("readProbePN", slotID, portID, [&](auto& controller) {
        return controller.readProbePN(port_index(portID), pn, bounded_length(len));
    });
    LOG_F(INFO, "Reporting probe part number : %s", len == 0 ? "" : shown(pn));
    return result;
}

NP_ErrorCode readProbeSN(int slotID, int portID, int /*dockID*/, uint64_t* sn) {
    LOG_SCOPE_F(INFO, "readProbeSN");
    LOG_F(INFO, "slotID : %d, portID : %d", slotID, portID);
    return forward_to_port("readProbeSN", slotID, portID, [&](auto& controller) {
        unsigned long long number = read_from_host(sn);
        const bool read = current_mode().read_probe_serial_number(controller, port_index(portID), &number);
        write_to_host(sn, static_cast<uint64_t>(number));
        return read;
    });
}

NP_ErrorCode readHSPN(int slotID, int portID, char* pn, size_t len) {
    LOG_SCOPE_F(INFO, "readHSPN");
    LOG_F(INFO, "slotID : %d, portID : %d", slotID, portID);
    if (slotID == self_opening_slot) {
        open_port("readHSPN", slotID, portID);
    }
    while (current_mode().headstage_waits_for_port() && !g_i2c_comm_initialised && may_be_opened(portID)) {
        console::out("Waiting for I2C_comm_initialization\n");
        wait_for(i2c_poll_wait);
    }
    std::array<char, 64> unwanted{};
    char* const text = pn == nullptr || len == 0 ? unwanted.data() : pn;
    const size_t length = text == pn ? len : unwanted.size();
    text[0] = '\0';
    const auto result = forward_to_port("readHSPN", slotID, portID, [&](auto& controller) {
        return controller.readHSPN(port_index(portID), text, bounded_length(length));
    });
    if (text[0] != 'N') {
        LOG_F(INFO, "Invalid HS eeprom detected, defaulting to NP2_HS_30");
        copy_text(default_headstage_part_number, text, length);
    }
    LOG_F(INFO, "Reporting HS part number : %s", text);
    return result;
}

NP_ErrorCode get_available_port_capability(int /*slotID*/, uint8_t* count) {
    LOG_SCOPE_F(INFO, "get_available_port_capability");
    return forward_to_controller("get_available_port_capability", [&](auto& controller) {
        write_to_host(count, static_cast<uint8_t>(controller.get_np_port_count_from_fpga_signature()));
        return true;
    });
}

std::string bs_get_fpga_design_label() {
    LOG_SCOPE_F(INFO, "bs_get_fpga_design_label");
    return ask_controller("bs_get_fpga_design_label",
                          [](auto& controller) { return controller.get_design_identifier_from_fpga(); });
}

std::string bs_get_fpga_design_build_date() {
    LOG_SCOPE_F(INFO, "bs_get_fpga_design_build_date");
    return ask_controller("bs_get_fpga_design_build_date",
                          [](auto& controller) { return controller.get_design_build_date(); });
}

} // namespace Neuropixels
