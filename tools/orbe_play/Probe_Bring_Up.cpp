#include "Probe_Bring_Up.h"

#include <NeuropixAPI.h>

#include <array>

namespace Pelgar::ORBE::recording {

namespace {

constexpr int slot = 0;
constexpr int dock = 0;
constexpr int shank = 0;
constexpr int bank = 0;
constexpr int channel_count = NP1_PROBE_CHANNEL_COUNT;
// The channel that the probe keeps for its internal reference; it has no electrode to select.
constexpr int reference_channel = 191;
constexpr int ap_gain_code = 4;
constexpr int lfp_gain_code = 0;

} // namespace

bool Probe_Bring_Up::run() {
    using namespace Neuropixels;
    return succeeded("openPort", openPort(slot, m_port)) &&
           succeeded("openProbe", openProbe(slot, m_port, dock)) &&
           succeeded("init", Neuropixels::init(slot, m_port, dock)) &&
           succeeded("setOPMODE", setOPMODE(slot, m_port, dock, RECORDING)) && configure_channels() &&
           succeeded("writeProbeConfiguration", writeProbeConfiguration(slot, m_port, dock, true)) &&
           identify();
}

bool Probe_Bring_Up::configure_channels() {
    using namespace Neuropixels;
    for (int channel = 0; channel < channel_count; ++channel) {
        const bool configured =
            (channel == reference_channel ||
             succeeded("selectElectrode", selectElectrode(slot, m_port, dock, channel, shank, bank))) &&
            succeeded("setReference", setReference(slot, m_port, dock, channel, shank, EXT_REF, bank)) &&
            succeeded("setGain", setGain(slot, m_port, dock, channel, ap_gain_code, lfp_gain_code)) &&
            succeeded("setAPCornerFrequency", setAPCornerFrequency(slot, m_port, dock, channel, false));
        if (!configured) {
            m_problem += " for channel " + std::to_string(channel);
            return false;
        }
    }
    return true;
}

bool Probe_Bring_Up::identify() {
    using namespace Neuropixels;
    std::array<char, 64> text{};
    if (!succeeded("readHSPN", readHSPN(slot, m_port, text.data(), text.size()))) {
        return false;
    }
    m_headstage = text.data();
    if (!succeeded("readProbePN", readProbePN(slot, m_port, dock, text.data(), text.size()))) {
        return false;
    }
    m_probe = text.data();
    return succeeded("readProbeSN", readProbeSN(slot, m_port, dock, &m_serial_number));
}

bool Probe_Bring_Up::succeeded(const char* name, int result) {
    if (result == Neuropixels::SUCCESS) {
        return true;
    }
    m_problem =
        std::string(name) + " answered " + std::to_string(result) + " on port " + std::to_string(m_port);
    return false;
}

std::string Probe_Bring_Up::identity() const {
    return "headstage " + m_headstage + ", probe " + m_probe + ", serial number " +
           std::to_string(m_serial_number);
}

} // namespace Pelgar::ORBE::recording
