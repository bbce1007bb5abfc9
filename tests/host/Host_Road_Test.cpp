// A host's run in simulation mode, and what it says when something is wrong.
#include "Host_Road.h"

#include "Host_Road_Expectation.h"
#include "Host_Road_Files.h"
#include "Waiter_Guard.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <filesystem>
#include <fstream>

namespace {

using namespace Pelgar::ORBE::host;
using Pelgar::ORBE::test::Waiter_Guard;

class HostRoad : public testing::Test {
protected:
    HostRoad() { select_simulation(m_files.recording()); }

    static void select_simulation(const std::filesystem::path& recording) {
        std::ofstream("ORBE_DFGMZ_ADAPTER_SIM", std::ios::trunc) << recording.string() << "\n";
    }

    Host_Road_Files m_files;
    Waiter_Guard m_waiter;
};

// Where packet `packet` of the fourth port, and of the ADC, lies in the expectation.
std::size_t packet_of_port_4(const Expectation_Head& head, std::size_t packet) {
    const std::size_t before =
        head.electrode_packets[0] + head.electrode_packets[1] + head.electrode_packets[2];
    return sizeof(Expectation_Head) + (before + packet) * sizeof(Neuropixels::electrodePacket);
}

std::size_t packet_of_adc(const Expectation_Head& head, std::size_t packet) {
    return packet_of_port_4(head, head.electrode_packets[3]) + packet * sizeof(Expected_ADC_Packet);
}

const Expectation_Head& head_of(Host_Road_Files& files) {
    return *reinterpret_cast<const Expectation_Head*>(files.expectation());
}

TEST_F(HostRoad, PlaysARecordingInSimulation) {
    EXPECT_EQ(m_files.run(END_BY_CLOSING), Host_Road_Result{});
}

TEST_F(HostRoad, RunsTwiceInOneProcess) {
    EXPECT_EQ(m_files.run(END_BY_CLOSING), Host_Road_Result{});
    EXPECT_EQ(m_files.run(END_BY_CLOSING), Host_Road_Result{});
}

TEST_F(HostRoad, TellsTheFirstByteOfAnElectrodePacketThatDiffers) {
    m_files.expectation()[packet_of_port_4(head_of(m_files), 20) + 10055] ^= 1;
    EXPECT_EQ(m_files.run(END_BY_CLOSING), (Host_Road_Result{ROAD_ELECTRODE_DIFFERS, 4, 20, 10055}));
}

TEST_F(HostRoad, TellsTheFirstByteOfAnADCPacketThatDiffers) {
    m_files.expectation()[packet_of_adc(head_of(m_files), 100) + 9] ^= 1;
    EXPECT_EQ(m_files.run(END_BY_CLOSING), (Host_Road_Result{ROAD_ADC_DIFFERS, 0, 100, 9}));
    m_files.expectation()[packet_of_adc(head_of(m_files), 70) + 4] ^= 1;
    EXPECT_EQ(m_files.run(END_BY_CLOSING), (Host_Road_Result{ROAD_ADC_DIFFERS, 0, 70, 4}));
}

TEST_F(HostRoad, TellsThatTheBoxDoesNotOpen) {
    select_simulation("no_such_file.bin");
    EXPECT_EQ(m_files.run(END_BY_CLOSING), (Host_Road_Result{ROAD_NOT_OPENED, 0, 0, 0}));
}

TEST_F(HostRoad, RefusesWhatIsNoExpectation) {
    constexpr Host_Road_Result refused{ROAD_BAD_EXPECTATION, 0, 0, 0};
    EXPECT_EQ(run_host_road(m_files.expectation(), 0, END_BY_CLOSING), refused);
    EXPECT_EQ(run_host_road(m_files.expectation(), m_files.size() - 8, END_BY_CLOSING), refused);
    m_files.expectation()[0] ^= 1;
    EXPECT_EQ(m_files.run(END_BY_CLOSING), refused);
}

TEST_F(HostRoad, RefusesMorePacketsThanTheQueuesHold) {
    const Expectation_Head head{expectation_magic, {0, 0, most_packets + 1, 0}, 0, 0};
    EXPECT_EQ(run_host_road(&head, sizeof head, END_BY_CLOSING),
              (Host_Road_Result{ROAD_BAD_EXPECTATION, 0, 0, 0}));
}

} // namespace
