#include "Driver_Run.h"

#include "Host_Files.h"
#include "Host_Readers.h"
#include "Killed_Reader.h"
#include "Wait_Until.h"

#include <NeuropixAPI.h>

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace Pelgar::ORBE::test {

namespace {

using namespace Neuropixels;

constexpr std::uint64_t super_frames = 900;
// What stays behind in buffers that the stream's end does not fill.
constexpr std::uint64_t left_behind = 240;
constexpr std::uint64_t least_packets = (super_frames - left_behind) / 12;
constexpr std::uint64_t least_adc_packets = super_frames - left_behind;
constexpr auto patience = std::chrono::seconds(60);

struct Device {
    const char* line; // of the switch file
    int slot;
    std::vector<int> ports;
    int adc_row_length; // 0: without ADC inputs
};

class Driver_Host {
public:
    Driver_Host(const Device& device, const std::function<void()>& rewind)
        : m_device(device), m_rewind(rewind) {
        select_host_mode(device.line);
        basestationID id{};
        EXPECT_EQ(getDeviceList(&id, 1), 1);
        mapBS(id.ID, device.slot);
        EXPECT_EQ(openBS(device.slot), SUCCESS);
    }

    ~Driver_Host() { EXPECT_EQ(closeBS(m_device.slot), SUCCESS); }

    Driver_Host(const Driver_Host&) = delete;
    Driver_Host& operator=(const Driver_Host&) = delete;

    // Everything that the driver brings, from its first sample on.
    void run_to_the_end(bool changing_settings) {
        begin();
        Host_Readers readers(m_device.slot, m_device.ports, m_device.slot, m_device.adc_row_length);
        EXPECT_EQ(setSWTrigger(m_device.slot), SUCCESS);
        if (changing_settings) {
            EXPECT_TRUE(wait_until([&] { return readers.fewest_packets() > 0; }, patience));
            change_settings();
        }
        EXPECT_TRUE(wait_until([&] { return has_all(readers); }, patience))
            << readers.fewest_packets() << " packets, " << readers.adc_packets() << " of the ADC inputs";
        EXPECT_EQ(arm(m_device.slot), SUCCESS);
        expect_clean(readers);
        for (std::size_t i = 0; i < m_device.ports.size(); ++i) {
            EXPECT_EQ(readers.port(i).first_sample(), 0U);
        }
    }

    // Stops wherever it is.
    void run_for(std::chrono::milliseconds time) {
        begin();
        Host_Readers readers(m_device.slot, m_device.ports, m_device.slot, m_device.adc_row_length);
        EXPECT_EQ(setSWTrigger(m_device.slot), SUCCESS);
        std::this_thread::sleep_for(time);
        EXPECT_EQ(arm(m_device.slot), SUCCESS);
        expect_clean(readers);
    }

#if !defined(ORBE_SANITIZED) && !defined(_WIN32)
    // The thread that reads is ended by force, late.
    void run_with_killed_reader() {
        begin();
        EXPECT_EQ(setSWTrigger(m_device.slot), SUCCESS);
        {
            const Killed_Reader reader(m_device.slot);
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
        EXPECT_EQ(arm(m_device.slot), SUCCESS);
    }
#endif

private:
    void begin() {
        EXPECT_EQ(arm(m_device.slot), SUCCESS);
        m_rewind();
    }

    bool has_all(const Host_Readers& readers) const {
        return readers.fewest_packets() >= least_packets &&
               (m_device.adc_row_length == 0 || readers.adc_packets() >= least_adc_packets);
    }

    // Those that need no link to a headstage, which these devices do not have.
    void change_settings() const {
        const int slot = m_device.slot;
        EXPECT_EQ(switchmatrix_clear(slot, SM_Output_StatusBit), SUCCESS);
        EXPECT_EQ(switchmatrix_set(slot, SM_Output_StatusBit, SM_Input_PXI2, true), SUCCESS);
        EXPECT_EQ(setSyncClockPeriod(slot, 500), SUCCESS);
        EXPECT_EQ(setParameter(NP_PARAM_SYNCSOURCE, SyncSource_Clock), SUCCESS);
        if (m_device.adc_row_length > 0) {
            EXPECT_EQ(ADC_setVoltageRange(slot, ADC_RANGE_10V), SUCCESS);
            for (int input = 0; input < 12; ++input) {
                EXPECT_EQ(ADC_setComparatorThreshold(slot, input, -1.0, 1.0), SUCCESS);
            }
        }
    }

    void expect_clean(Host_Readers& readers) const {
        readers.finish();
        EXPECT_EQ(readers.faults(), std::vector<std::string>{});
        for (std::size_t i = 0; i < m_device.ports.size(); ++i) {
            EXPECT_EQ(readers.port(i).gaps(), std::vector<std::uint64_t>{}) << m_device.ports[i];
        }
    }

    const Device& m_device;
    const std::function<void()>& m_rewind;
};

} // namespace

recording::Recording_Options driver_run_options() {
    auto options = ramp_options();
    options.super_frames = super_frames;
    return options;
}

void run_on_driver(const std::function<void()>& rewind) {
    std::mt19937 random(11);
    for (const Device& device : {Device{"pxi", 2, {1, 2, 3, 4}, 0}, Device{"usb", 20, {1, 2}, 24}}) {
        SCOPED_TRACE(device.line);
        Driver_Host host(device, rewind);
        host.run_to_the_end(true);
        for (int run = 0; run < 2; ++run) {
            host.run_for(std::chrono::milliseconds(random() % 30));
        }
#if !defined(ORBE_SANITIZED) && !defined(_WIN32)
        host.run_with_killed_reader();
#endif
        host.run_to_the_end(false);
    }
}

} // namespace Pelgar::ORBE::test
