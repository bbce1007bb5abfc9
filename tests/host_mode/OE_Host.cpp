#include "OE_Host.h"

#include "Host_Call.h"

#include <array>
#include <cstring>
#include <deque>
#include <exception>
#include <string>
#include <thread>

namespace Pelgar::ORBE::test {

namespace {

using namespace Neuropixels;

constexpr int dock = 1;
constexpr int channels = NP1_PROBE_CHANNEL_COUNT;
constexpr int inputs = 12;

bool is_version(const firmware_Info& info, int major, int minor, int build) {
    return info.major == major && info.minor == minor && info.build == build;
}

} // namespace

OE_Host::~OE_Host() {
    m_readers.reset();
    if (m_is_open) {
        closeBS(m_slot);
    }
}

bool OE_Host::find() {
    std::array<basestationID, 16> list{};
    scanBS();
    const int count = getDeviceList(list.data(), static_cast<int>(list.size()));
    for (int i = 0; i < count; ++i) {
        basestationID& id = list[static_cast<std::size_t>(i)];
        int slot = -1;
        basestationID info{};
        if (id.platformid == m_platform && tryGetSlotID(&id, &slot) &&
            getDeviceInfo(slot, &info) == SUCCESS && info.platformid == m_platform) {
            m_slot = slot;
            return true;
        }
    }
    return false;
}

void OE_Host::open() {
    if (m_platform == NPPlatform_PXI) {
        // Asked before the basestation is open, and compared exactly.
        firmware_Info basestation{};
        firmware_Info connect_card{};
        HOST_MUST(bs_getFirmwareInfo(m_slot, &basestation));
        HOST_MUST(bsc_getFirmwareInfo(m_slot, &connect_card));
        HOST_MUST(is_version(basestation, 2, 0, 169));
        HOST_MUST(is_version(connect_card, 3, 2, 191));
    }
    HOST_MUST(openBS(m_slot));
    m_is_open = true;
    int count = 0;
    HOST_MUST(getBSCSupportedPortCount(m_slot, &count));
    HOST_MUST(count == (m_platform == NPPlatform_PXI ? 4 : 2));
    std::deque<bool> found(static_cast<std::size_t>(count));
    std::vector<std::thread> threads;
    for (int port = 1; port <= count; ++port) {
        threads.emplace_back(
            [this, port, &found] { look_at_port(port, found[static_cast<std::size_t>(port - 1)]); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    m_ports.clear();
    for (int port = 1; port <= count; ++port) {
        if (found[static_cast<std::size_t>(port - 1)]) {
            m_ports.push_back(port);
        }
    }
}

void OE_Host::look_at_port(int port, bool& found) const {
    bool detected = false;
    std::array<char, 64> part_number{};
    found = openPort(m_slot, port) == SUCCESS && detectHeadStage(m_slot, port, &detected) == SUCCESS &&
            detected && readHSPN(m_slot, port, part_number.data(), part_number.size()) == SUCCESS &&
            std::strcmp(part_number.data(), "NP2_HS_30") == 0;
}

void OE_Host::configure() {
    for (const int port : m_ports) {
        configure_port(port);
    }
    if (m_platform != NPPlatform_USB) {
        return;
    }
    HOST_MUST(ADC_enableProbe(m_slot, true));
    HOST_MUST(ADC_setVoltageRange(m_slot, ADC_RANGE_5V));
    for (int input = 0; input < inputs; ++input) {
        HOST_MUST(ADC_setComparatorThreshold(m_slot, input, 0.5, 1.5));
        HOST_MUST(DAC_enableOutput(m_slot, input, false));
    }
}

void OE_Host::configure_port(int port) const {
    HardwareID headstage{};
    HardwareID flex{};
    HardwareID probe{};
    HOST_MUST(getHeadstageHardwareID(m_slot, port, &headstage));
    HOST_MUST(getFlexHardwareID(m_slot, port, dock, &flex));
    HOST_MUST(getProbeHardwareID(m_slot, port, dock, &probe));
    HOST_MUST(std::string(headstage.ProductNumber) == "NP2_HS_30");
    HOST_MUST(std::string(probe.ProductNumber) == "PRB_1_4_0480_1");
    HOST_MUST(probe.SerialNumber != 0);
    int major = 0;
    int minor = 0;
    HOST_MUST(HST_GetVersion(m_slot, port, &major, &minor) != SUCCESS);
    HOST_MUST(openProbe(m_slot, port, dock));
    HOST_MUST(init(m_slot, port, dock));
    HOST_MUST(setOPMODE(m_slot, port, dock, RECORDING));
    HOST_MUST(setHSLed(m_slot, port, false));
    for (int channel = 0; channel < channels; ++channel) {
        HOST_MUST(setGain(m_slot, port, dock, channel, 3, 2));
        HOST_MUST(setReference(m_slot, port, dock, channel, 0, EXT_REF, 0));
        HOST_MUST(setAPCornerFrequency(m_slot, port, dock, channel, false));
        HOST_MUST(setStdb(m_slot, port, dock, channel, false));
        int ap_gain = -1;
        int lfp_gain = -1;
        HOST_MUST(getGain(m_slot, port, dock, channel, &ap_gain, &lfp_gain));
        HOST_MUST(ap_gain == 3 && lfp_gain == 2);
    }
    HOST_MUST(writeProbeConfiguration(m_slot, port, dock, false));
}

void OE_Host::close() {
    m_readers.reset();
    m_is_open = false;
    HOST_MUST(closeBS(m_slot));
}

void OE_Host::start() {
    HOST_MUST(arm(m_slot));
    HOST_MUST(setSWTrigger(m_slot));
    const int row_length = m_platform == NPPlatform_USB ? adc_row_length : 0;
    m_readers = std::make_unique<Host_Readers>(m_slot, m_ports, m_slot, row_length);
}

void OE_Host::stop() {
    std::exception_ptr failure;
    std::thread arming([&] {
        try {
            HOST_MUST(arm(m_slot));
        } catch (...) {
            failure = std::current_exception();
        }
    });
    arming.join();
    m_readers->finish();
    if (failure) {
        std::rethrow_exception(failure);
    }
}

} // namespace Pelgar::ORBE::test
