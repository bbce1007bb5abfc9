#include "SG_Host.h"

#include "Host_Call.h"

#include <string>
#include <utility>

namespace Pelgar::ORBE::test {

namespace {

using namespace Neuropixels;

constexpr int dock = 1;
constexpr int channels = NP1_PROBE_CHANNEL_COUNT;
constexpr int inputs = 12;
constexpr int sync_period_ms = 1000;

} // namespace

SG_Host::~SG_Host() {
    m_readers.reset();
    closeBS(m_slot);
}

bool SG_Host::find() const {
    basestationID info{};
    int slot = -1;
    scanBS();
    if (m_platform == NPPlatform_USB) {
        basestationID list[16]{};
        const int count = getDeviceList(list, 16);
        for (int i = 0; i < count; ++i) {
            if (list[i].platformid == NPPlatform_USB) {
                mapBS(list[i].ID, m_slot);
            }
        }
    }
    return getDeviceInfo(m_slot, &info) == SUCCESS && info.platformid == m_platform &&
           tryGetSlotID(&info, &slot) && slot == m_slot;
}

void SG_Host::open() {
    HOST_MUST(closeBS(m_slot));
    HOST_MUST(openBS(m_slot));
    HOST_MUST(openBS(m_slot));
    HardwareID connect_card{};
    HOST_MUST(getBSCHardwareID(m_slot, &connect_card));
    HOST_MUST(connect_card.ProductNumber[0] != '\0');
}

void SG_Host::configure() {
    for (const int port : m_ports) {
        configure_probe(port);
    }
    HOST_MUST(setTriggerEdge(m_slot, true));
    HOST_MUST(switchmatrix_clear(m_slot, SM_Output_StatusBit));
    HOST_MUST(switchmatrix_set(m_slot, SM_Output_StatusBit, SM_Input_SMA, true));
    bool connected = false;
    HOST_MUST(switchmatrix_get(m_slot, SM_Output_StatusBit, SM_Input_SMA, &connected));
    HOST_MUST(connected);
    HOST_MUST(setParameter(NP_PARAM_BUFFERSIZE, 128 * 1024));
    HOST_MUST(setParameter(NP_PARAM_BUFFERCOUNT, 64));
    HOST_MUST(setSyncClockPeriod(m_slot, sync_period_ms));
    if (m_platform == NPPlatform_USB) {
        HOST_MUST(ADC_enableProbe(m_slot, true));
        HOST_MUST(ADC_setVoltageRange(m_slot, ADC_RANGE_5V));
        for (int input = 0; input < inputs; ++input) {
            HOST_MUST(ADC_setComparatorThreshold(m_slot, input, 0.5, 1.5));
        }
    }
}

void SG_Host::configure_probe(int port) const {
    HardwareID headstage{};
    HardwareID flex{};
    HardwareID probe{};
    HOST_MUST(getHeadstageHardwareID(m_slot, port, &headstage));
    HOST_MUST(getFlexHardwareID(m_slot, port, dock, &flex));
    HOST_MUST(getProbeHardwareID(m_slot, port, dock, &probe));
    HOST_MUST(std::string(headstage.ProductNumber) == "NP2_HS_30");
    HOST_MUST(probe.SerialNumber != 0);
    int major = 0;
    int minor = 0;
    HOST_MUST(HST_GetVersion(m_slot, port, &major, &minor) != SUCCESS);
    HOST_MUST(openProbe(m_slot, port, dock));
    HOST_MUST(init(m_slot, port, dock));
    for (int channel = 0; channel < channels; ++channel) {
        HOST_MUST(setGain(m_slot, port, dock, channel, 4, 3));
        HOST_MUST(setReference(m_slot, port, dock, channel, 0, EXT_REF, 0));
        HOST_MUST(setAPCornerFrequency(m_slot, port, dock, channel, false));
        HOST_MUST(setStdb(m_slot, port, dock, channel, channel % 50 == 0));
    }
    HOST_MUST(setOPMODE(m_slot, port, dock, RECORDING));
    HOST_MUST(setHSLed(m_slot, port, false));
    HOST_MUST(writeProbeConfiguration(m_slot, port, dock, true));
}

void SG_Host::start() {
    HOST_MUST(arm(m_slot));
    m_readers = std::make_unique<Host_Readers>(m_slot, m_ports, m_slot,
                                               m_platform == NPPlatform_USB ? m_adc_row_length : 0);
    HOST_MUST(setSWTrigger(m_slot));
}

void SG_Host::stop() {
    m_readers->finish();
    HOST_MUST(closeBS(m_slot));
}

void SG_Host::change_settings() const {
    for (const int port : m_ports) {
        for (int channel = 0; channel < channels; ++channel) {
            HOST_MUST(setGain(m_slot, port, dock, channel, 5, 4));
        }
        HOST_MUST(writeProbeConfiguration(m_slot, port, dock, true));
    }
}

} // namespace Pelgar::ORBE::test
