#include "ports/Probe_Port.h"

#include "probe_link/ADC_Calibration.h"
#include "probe_link/NP_Probe_Config_Reader.h"
#include "probe_link/NP_Probe_Layout.h"

#include <cstdint>

namespace Pelgar::ORBE {

namespace {

// A host's number as the configuration takes it. A negative one becomes a large one, which no setting accepts
// and which is logged as it was.
std::uint32_t to_setting(int number) {
    return static_cast<std::uint32_t>(number);
}

} // namespace

void Probe_Port::renew(I2C_Over_GSML_Module* link) {
    m_control = std::make_unique<NP_Probe_Control_Module>(link);
    m_gain_filter = std::make_shared<C_L2_CH_Gain_Fix_Filter>();
}

bool Probe_Port::select_electrode(int channel, int bank) {
    const std::uint32_t number = to_setting(channel);
    const std::uint32_t bank_setting = to_setting(bank);
    if (config().select_electrode(number, bank_setting) != 0) {
        return false;
    }
    // A disconnected channel has no electrode; the filter goes on with the factor that it had.
    if (bank_setting != probe_layout::disconnected_bank) {
        m_gain_filter->set_channel_bank(number, static_cast<std::uint16_t>(bank_setting));
    }
    return true;
}

bool Probe_Port::set_gain(int channel, int ap_gain, int lfp_gain) {
    const std::uint32_t number = to_setting(channel);
    const std::uint32_t ap_code = to_setting(ap_gain);
    const std::uint32_t lfp_code = to_setting(lfp_gain);
    if (config().set_gain(number, ap_code, lfp_code) != 0) {
        return false;
    }
    m_gain_filter->set_channel_gain_codes(number, static_cast<std::uint16_t>(ap_code),
                                          static_cast<std::uint16_t>(lfp_code));
    return true;
}

bool Probe_Port::get_gain(int channel, int* ap_gain, int* lfp_gain) {
    std::uint32_t ap_code = 0;
    std::uint32_t lfp_code = 0;
    if (config().get_gain(to_setting(channel), &ap_code, &lfp_code) != 0) {
        return false;
    }
    if (ap_gain != nullptr) {
        *ap_gain = static_cast<int>(ap_code);
    }
    if (lfp_gain != nullptr) {
        *lfp_gain = static_cast<int>(lfp_code);
    }
    return true;
}

bool Probe_Port::set_reference(int channel, int reference, int int_ref_bank) {
    return config().set_reference(to_setting(channel), to_setting(reference), to_setting(int_ref_bank)) == 0;
}

bool Probe_Port::set_ap_corner_frequency(int channel, bool disable) {
    return config().set_ap_filter(to_setting(channel), disable) == 0;
}

void Probe_Port::clear_electrodes() {
    for (std::uint32_t channel = 0; channel < probe_layout::channel_count; ++channel) {
        if (channel != probe_layout::reference_channel) {
            config().select_electrode(channel, probe_layout::disconnected_bank);
        }
    }
}

bool Probe_Port::load_adc_calibration(const char* path) {
    NP_Probe_Config_Reader reader;
    if (path == nullptr || !reader.load_adc_calibration_data_from_file(path)) {
        return false;
    }
    bool accepted = true;
    for (const ADC_Calibration& calibration : reader.adc_calibration()) {
        accepted = config().set_adc_calibration(&calibration) == 0 && accepted;
    }
    return accepted;
}

bool Probe_Port::load_gain_calibration(const char* path) {
    return m_gain_filter->load_gain_calibration(path == nullptr ? "" : path);
}

} // namespace Pelgar::ORBE
