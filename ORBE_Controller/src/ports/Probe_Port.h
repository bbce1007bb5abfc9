// Layer: device controller. One probe port: the control module of its probe and the gain filter of its data,
// which are told of a setting together. Called on the host's threads, one call at a time; settings change the
// configuration image, not the probe, and never block.
#pragma once

#include "gain/C_L2_CH_Gain_Fix_Filter.h"
#include "probe_link/M_NP_Probe_Control.h"

#include <memory>

namespace Pelgar::ORBE {

class I2C_Over_GSML_Module;

class Probe_Port {
public:
    // A new control module on the link and a new gain filter, in place of earlier ones.
    void renew(I2C_Over_GSML_Module* link);

    bool is_made() const { return m_gain_filter != nullptr; }

    NP_Probe_Control_Module& control() { return *m_control; }

    NP_Probe_Config_Module& config() { return m_control->config(); }

    const std::shared_ptr<C_L2_CH_Gain_Fix_Filter>& gain_filter() const { return m_gain_filter; }

    // These take a host's numbers as they come; false when one of them is rejected, with the reason in the
    // log.
    bool select_electrode(int channel, int bank);
    bool set_gain(int channel, int ap_gain, int lfp_gain);
    bool get_gain(int channel, int* ap_gain, int* lfp_gain);
    bool set_reference(int channel, int reference, int int_ref_bank);
    bool set_ap_corner_frequency(int channel, bool disable);

    // Disconnects every channel from its electrodes, but for the reference channel.
    void clear_electrodes();

    // From a file (CSV), into the configuration and into the filter.
    bool load_adc_calibration(const char* path);
    bool load_gain_calibration(const char* path);

private:
    std::unique_ptr<NP_Probe_Control_Module> m_control;
    std::shared_ptr<C_L2_CH_Gain_Fix_Filter> m_gain_filter;
};

} // namespace Pelgar::ORBE
