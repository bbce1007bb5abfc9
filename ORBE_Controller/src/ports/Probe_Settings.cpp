#include "ports/Probe_Settings.h"

#include "common/Host_Path.h"
#include "ports/Probe_Ports.h"

#include <loguru.hpp>

#include <cstdint>
#include <string>

namespace Pelgar::ORBE {

namespace {

// Most of what keeps a calibration from being loaded is a mistyped name.
void log_if_unreadable(const char* path) {
    const char* const name = path == nullptr ? "" : path;
    if (const std::string reason = why_unreadable(name); !reason.empty()) {
        LOG_F(ERROR, "Calibration file cannot be opened, %s: %s", reason.c_str(), name);
    }
}

} // namespace

bool Probe_Settings::selectElectrode(unsigned port, int channel, int bank) {
    return m_ports.at(port).select_electrode(channel, bank);
}

bool Probe_Settings::setGain(unsigned port, int channel, int ap_gain, int lfp_gain) {
    return m_ports.at(port).set_gain(channel, ap_gain, lfp_gain);
}

bool Probe_Settings::getGain(unsigned port, int channel, int* ap_gain, int* lfp_gain) {
    return m_ports.at(port).get_gain(channel, ap_gain, lfp_gain);
}

bool Probe_Settings::setReference(unsigned port, int channel, int reference, int int_ref_bank) {
    return m_ports.at(port).set_reference(channel, reference, int_ref_bank);
}

bool Probe_Settings::setAPCornerFrequency(unsigned port, int channel, bool disable) {
    return m_ports.at(port).set_ap_corner_frequency(channel, disable);
}

bool Probe_Settings::setStdb(unsigned port, int channel, bool standby) {
    return m_ports.at(port).config().set_standby(static_cast<std::uint32_t>(channel), standby) == 0;
}

bool Probe_Settings::get_lfp_gain(unsigned port, int channel, int* lfp_gain) {
    *lfp_gain = static_cast<int>(m_ports.at(port).config().get_lfp_gain(static_cast<std::uint32_t>(channel)));
    return true;
}

void Probe_Settings::clear_all_electrode_to_bank_assignments(unsigned port) {
    LOG_SCOPE_F(INFO, "clear_all_electrode_to_bank_assignments");
    LOG_F(INFO, "Clearing all channel to pixel assignments.");
    m_ports.run_on_port("clear_all_electrode_to_bank_assignments", port, [&] {
        m_ports.at(port).clear_electrodes();
        return true;
    });
}

bool Probe_Settings::setADCCalibration(unsigned port, const char* path) {
    LOG_SCOPE_F(INFO, "setADCCalibration");
    const bool loaded = m_ports.run_on_port("setADCCalibration", port,
                                            [&] { return m_ports.at(port).load_adc_calibration(path); });
    if (loaded) {
        LOG_F(INFO, "ADC Calibration loaded");
    } else {
        LOG_F(ERROR, "ADC Calibration load error");
        log_if_unreadable(path);
    }
    return loaded;
}

bool Probe_Settings::setGainCalibration(unsigned port, const char* path) {
    LOG_SCOPE_F(INFO, "setGainCalibration");
    const bool loaded = m_ports.run_on_port("setGainCalibration", port,
                                            [&] { return m_ports.at(port).load_gain_calibration(path); });
    if (!loaded) {
        LOG_F(ERROR, "Gain Calibration load error");
        log_if_unreadable(path);
    }
    return loaded;
}

} // namespace Pelgar::ORBE
