// Layer: device controller. What a host sets on a port: the configuration image of its probe, and its
// calibration. Called on the host's threads; changes the image and the gain filter, not the probe. Port index
// 0..3.
#pragma once

namespace Pelgar::ORBE {

class Probe_Ports;

class Probe_Settings {
public:
    // `ports` must outlive the object.
    explicit Probe_Settings(Probe_Ports& ports) : m_ports(ports) {}

    // False when a value is rejected. Throw as `Probe_Ports::at` does.
    bool selectElectrode(unsigned port, int channel, int bank);
    bool setGain(unsigned port, int channel, int ap_gain, int lfp_gain);
    bool getGain(unsigned port, int channel, int* ap_gain, int* lfp_gain);
    bool setReference(unsigned port, int channel, int reference, int int_ref_bank);
    bool setAPCornerFrequency(unsigned port, int channel, bool disable);
    bool setStdb(unsigned port, int channel, bool standby);
    bool get_lfp_gain(unsigned port, int channel, int* lfp_gain);

    // These go through `Probe_Ports::run_on_port`, which routes the link to the port and logs what is thrown.

    void clear_all_electrode_to_bank_assignments(unsigned port);
    bool setADCCalibration(unsigned port, const char* path);
    bool setGainCalibration(unsigned port, const char* path);

private:
    Probe_Ports& m_ports;
};

} // namespace Pelgar::ORBE
