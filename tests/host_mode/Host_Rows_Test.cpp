// What published acquisition programs do and expect, one test a fact: those without which nothing is recorded
// (Needed) and those without which something is shown or stored wrongly (Shown). On the virtual box.
#include "Host_Files.h"
#include "Port_Check.h"

#include "Box_Row.h"

#include <NeuropixAPI_C.h>
#include <host_streams/ADC_Stream.h>
#include <host_streams/Electrode_Stream.h>

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace Neuropixels;
using namespace Pelgar::ORBE;
using namespace Pelgar::ORBE::test;

class Needed : public Box_Row {};

class Shown : public Box_Row {};

// ---- Starting, reading, stopping.

TEST_F(Needed, TriggerStartsArmStopsThrowsAwayAndMakesReadyAgain) {
    open_pxi();
    for (int run = 0; run < 3; ++run) {
        EXPECT_EQ(setSWTrigger(slot), SUCCESS);
        const auto packets = read_packets(1, 20);
        ASSERT_EQ(packets.size(), 20U);
        // Counted from the trigger.
        EXPECT_EQ(sample_of(packets.front().timestamp[0]) / 12, 0U);
        EXPECT_EQ(arm(slot), SUCCESS);
        EXPECT_EQ(queued(1), 0);
        EXPECT_EQ(read_now(1), 0);
    }
}

TEST_F(Needed, SecondTriggerOfARunChangesNothing) {
    open_pxi();
    EXPECT_EQ(setSWTriggerEx(slot, swtrigger1), SUCCESS);
    const auto first = read_packets(1, 10);
    EXPECT_EQ(setSWTrigger(slot), SUCCESS);
    const auto second = read_packets(1, 10);
    ASSERT_EQ(second.size(), 10U);
    EXPECT_EQ(sample_of(second.front().timestamp[0]), sample_of(first.back().timestamp[11]) + 1);
}

TEST_F(Needed, ArmingWhileReadersReadEndsTheRun) {
    open_pxi();
    EXPECT_EQ(setSWTrigger(slot), SUCCESS);
    std::atomic<bool> ending{false};
    std::thread reader([&] {
        while (!ending) {
            read_now(2);
        }
    });
    read_packets(1, 10);
    std::thread arming([] { EXPECT_EQ(arm(slot), SUCCESS); });
    arming.join();
    ending = true;
    reader.join();
    EXPECT_EQ(read_now(1), 0);
}

TEST_F(Needed, ClosingAloneEndsARun) {
    open_pxi();
    EXPECT_EQ(setSWTrigger(slot), SUCCESS);
    EXPECT_EQ(read_packets(4, 10).size(), 10U);
    EXPECT_EQ(closeBS(slot), SUCCESS);
    EXPECT_EQ(read_now(4), 0);
}

TEST_F(Needed, ReadsReturnAtOnceAndWriteTheCount) {
    open_pxi();
    EXPECT_EQ(read_now(1), 0) << "before the trigger";
    EXPECT_EQ(arm(slot), SUCCESS);
    EXPECT_EQ(read_now(1), 0) << "armed";
    EXPECT_EQ(setSWTrigger(slot), SUCCESS);
    std::vector<electrodePacket> packets(5000);
    int count = -1;
    EXPECT_EQ(readElectrodeData(slot, 1, 1, packets.data(), &count, 5000), SUCCESS) << "more than there are";
    EXPECT_GE(count, 0);
    EXPECT_LT(count, 5000);
    EXPECT_EQ(arm(slot), SUCCESS);
    EXPECT_EQ(read_now(1), 0) << "stopped";
    EXPECT_EQ(closeBS(slot), SUCCESS);
    EXPECT_EQ(read_now(1), 0) << "closed";
}

TEST_F(Needed, ADCReadsReturnAtOnceAndWriteTheCount) {
    open_usb();
    EXPECT_EQ(read_adc_now(), 0) << "before the trigger";
    EXPECT_EQ(setSWTrigger(usb_slot), SUCCESS);
    EXPECT_EQ(read_adc(600, 12).size(), 600U);
    EXPECT_EQ(arm(usb_slot), SUCCESS);
    EXPECT_EQ(read_adc_now(), 0) << "stopped";
    EXPECT_EQ(closeBS(usb_slot), SUCCESS);
    EXPECT_EQ(read_adc_now(), 0) << "closed";
}

TEST_F(Needed, NoPacketComesBeforeTheTrigger) {
    open_pxi();
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_EQ(queued(1), 0);
    EXPECT_EQ(read_now(1), 0);
}

TEST_F(Needed, ClosingBeforeOpeningAndOpeningTwiceAndClosingAgainSucceed) {
    select_host_mode("pxi");
    basestationID id{};
    EXPECT_EQ(getDeviceList(&id, 1), 1);
    EXPECT_EQ(closeBS(slot), SUCCESS);
    EXPECT_EQ(openBS(slot), SUCCESS);
    EXPECT_EQ(openBS(slot), SUCCESS);
    EXPECT_EQ(setSWTrigger(slot), SUCCESS);
    EXPECT_EQ(openBS(slot), SUCCESS);
    EXPECT_EQ(read_packets(1, 5).size(), 5U) << "a second opening takes nothing away";
    EXPECT_EQ(closeBS(slot), SUCCESS);
    EXPECT_EQ(closeBS(slot), SUCCESS);
}

TEST_F(Needed, ProbeIsOpenedAndInitialisedWithoutItsPort) {
    open_pxi();
    EXPECT_EQ(openProbe(slot, 3, 1), SUCCESS);
    EXPECT_EQ(init(slot, 3, 1), SUCCESS);
    EXPECT_EQ(writeProbeConfiguration(slot, 3, 1, true), SUCCESS);
}

TEST_F(Needed, FourPortsAreSearchedAtOnceAndAnEmptyOneAnswers) {
    m_box->lock_at_look(2, std::nullopt);
    open_pxi();
    std::array<bool, 4> detected{};
    std::array<NP_ErrorCode, 4> opened{};
    std::vector<std::thread> threads;
    for (int port = 1; port <= 4; ++port) {
        threads.emplace_back([&, port] {
            const auto index = static_cast<std::size_t>(port - 1);
            std::array<char, 64> text{};
            opened[index] = openPort(slot, port);
            EXPECT_EQ(detectHeadStage(slot, port, &detected[index]), SUCCESS);
            readHSPN(slot, port, text.data(), text.size());
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(detected, (std::array{true, true, false, true}));
    EXPECT_EQ(opened, (std::array{SUCCESS, SUCCESS, NO_LINK, SUCCESS}));
    EXPECT_EQ(setSWTrigger(slot), SUCCESS) << "an empty port costs the others nothing";
    EXPECT_EQ(read_packets(4, 10).size(), 10U);
    EXPECT_EQ(arm(slot), SUCCESS);
    EXPECT_EQ(read_now(4), 0);
}

TEST_F(Shown, SettingsChangeWhileDataStream) {
    open_pxi();
    ASSERT_EQ(init(slot, 1, 1), SUCCESS);
    EXPECT_EQ(setSWTrigger(slot), SUCCESS);
    Port_Check check(1);
    for (const auto& packet : read_packets(1, 20)) {
        check.take(packet);
    }
    EXPECT_EQ(setGain(slot, 1, 1, 7, 5, 1), SUCCESS);
    EXPECT_EQ(writeProbeConfiguration(slot, 1, 1, true), SUCCESS);
    for (const auto& packet : read_packets(1, 100)) {
        check.take(packet);
    }
    EXPECT_EQ(check.packets(), 120U);
    EXPECT_EQ(check.faults(), std::vector<std::string>{});
    EXPECT_EQ(check.gaps(), std::vector<std::uint64_t>{});
}

// ---- Electrode packets.

TEST_F(Needed, SamplesAreSignedWithZeroInTheMiddle) {
    open_pxi();
    EXPECT_EQ(setSWTrigger(slot), SUCCESS);
    std::set<int> seen;
    for (const auto& packet : read_packets(1, 200)) {
        for (const auto& row : packet.apData) {
            seen.insert(row[0]);
        }
        seen.insert(packet.lfpData[5]);
    }
    EXPECT_EQ(*seen.begin(), -512);
    EXPECT_EQ(*seen.rbegin(), 511);
    EXPECT_EQ(seen.size(), 1024U) << "every value of the ramp";
}

TEST_F(Shown, StampsAreTicksOf100kHz) {
    open_pxi();
    EXPECT_EQ(setSWTrigger(slot), SUCCESS);
    std::uint64_t ticks = 0;
    std::uint32_t last = 0;
    const auto packets = read_packets(2, 500);
    for (const auto& packet : packets) {
        for (const std::uint32_t stamp : packet.timestamp) {
            const std::uint32_t step = stamp - last;
            if (ticks++ != 0) {
                EXPECT_TRUE(step == 3 || step == 4) << step;
            }
            last = stamp;
        }
    }
    EXPECT_EQ(last - packets.front().timestamp[0], (packets.size() * 12 - 1) * 10 / 3);
}

TEST_F(Shown, PacketsAreWholeFromTheFirstOneOn) {
    open_pxi();
    EXPECT_EQ(setSWTrigger(slot), SUCCESS);
    for (int port = 1; port <= 4; ++port) {
        Port_Check check(port);
        const auto packets = read_packets(port, 30);
        for (const auto& packet : packets) {
            check.take(packet);
        }
        EXPECT_EQ(check.faults(), std::vector<std::string>{});
        // The first packet's LFP sample is that of its twelve AP samples: the probe's first one.
        EXPECT_EQ(check.first_sample(), 0U);
        EXPECT_EQ(packets.front().lfpData[0] + 512, (256 * (port - 1)) % 1024);
        EXPECT_EQ(packets.front().apData[11][0] + 512, (256 * (port - 1) + 11) % 1024);
    }
}

TEST_F(Needed, QueueStateIsNeverNegativeNorEmptyInSum) {
    open_pxi();
    for (const bool streaming : {false, true}) {
        if (streaming) {
            EXPECT_EQ(setSWTrigger(slot), SUCCESS);
            wait_for_queue(3, 50);
        }
        for (int port = 1; port <= 4; ++port) {
            int available = -1;
            int headroom = -1;
            EXPECT_EQ(getElectrodeDataFifoState(slot, port, 1, &available, &headroom), SUCCESS);
            EXPECT_GE(available, 0);
            EXPECT_GE(headroom, 0);
            EXPECT_GE(available + headroom, 2 * 30'000 / 12) << "two seconds";
        }
    }
}

TEST_F(Needed, HostThatDoesNotReadSeesTheQueueFillAndTheLossInTheStamps) {
    open_pxi();
    EXPECT_EQ(setSWTrigger(slot), SUCCESS);
    int headroom = 1;
    while (headroom != 0) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        int available = 0;
        ASSERT_EQ(getElectrodeDataFifoState(slot, 1, 1, &available, &headroom), SUCCESS);
    }
    wait_for_log_line("Port 1 : the host does not read fast enough");
    Port_Check check(1);
    while (check.gaps().empty()) {
        for (const auto& packet : read_packets(1, 100)) {
            check.take(packet);
        }
    }
    EXPECT_EQ(check.faults(), std::vector<std::string>{});
    EXPECT_EQ(check.gaps().front() % 12, 0U) << "whole packets";
}

// ---- ADC packets.

TEST_F(Needed, ADCRowsHaveTheCallersLength) {
    open_usb();
    EXPECT_EQ(setSWTrigger(usb_slot), SUCCESS);
    for (const int length : {24, 12}) {
        for (const auto& row : read_adc(288, length)) {
            for (int column = 8; column < 12; ++column) {
                EXPECT_EQ(row.samples[static_cast<std::size_t>(column)], 0)
                    << "an input that the box has not";
            }
            for (int column = 12; column < length; ++column) {
                const int comparator = row.samples[static_cast<std::size_t>(column)];
                EXPECT_TRUE(comparator == 0 || comparator == 1) << comparator;
            }
            for (std::size_t column = static_cast<std::size_t>(length); column < row.samples.size();
                 ++column) {
                EXPECT_EQ(row.samples[column], unwritten) << "behind the row";
            }
        }
    }
}

TEST_F(Needed, ADCInputsAreSignedOverTheRange) {
    open_usb();
    for (const ADCrange_t range : {ADC_RANGE_2_5V, ADC_RANGE_5V, ADC_RANGE_10V}) {
        EXPECT_EQ(ADC_setVoltageRange(usb_slot, range), SUCCESS);
        ADCrange_t got{};
        EXPECT_EQ(ADC_getVoltageRange(usb_slot, &got), SUCCESS);
        EXPECT_EQ(got, range);
    }
    EXPECT_EQ(setSWTrigger(usb_slot), SUCCESS);
    const recording::RHD_Generator generator = rhd_generator();
    std::uint64_t frame = 0;
    for (const auto& row : read_adc(3000, 12)) {
        for (std::size_t input = 0; input < 8; ++input) {
            ASSERT_EQ(row.samples[input], generator.adc_input(frame, input) - 32768);
        }
        ++frame;
    }
}

TEST_F(Needed, ADCQueueHoldsTwoSeconds) {
    open_usb();
    int available = -1;
    int headroom = -1;
    EXPECT_EQ(ADC_getPacketFifoStatus(usb_slot, &available, &headroom), SUCCESS);
    EXPECT_EQ(available, 0);
    EXPECT_GE(headroom, 60'000);
    EXPECT_FALSE(m_log.has_scope(1, "ADC_getPacketFifoStatus")) << "hosts ask hundreds of times a second";
    EXPECT_EQ(setSWTrigger(usb_slot), SUCCESS);
    while (available < 60'000) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        ASSERT_EQ(ADC_getPacketFifoStatus(usb_slot, &available, &headroom), SUCCESS);
        ASSERT_GE(headroom, 0);
    }
    std::uint64_t sample = 0;
    for (const auto& row : read_adc(60'000, 12)) {
        ASSERT_EQ(sample_of(row.info.Timestamp), sample++);
    }
}

TEST_F(Needed, QueueThatIsNotThereIsEmpty) {
    open_usb();
    constexpr int no_slot = 1000;
    int available = -1;
    int headroom = -1;
    EXPECT_NE(ADC_getPacketFifoStatus(no_slot, &available, &headroom), SUCCESS);
    EXPECT_EQ(available, 0);
    EXPECT_EQ(headroom, static_cast<int>(npoe_adapter::ADC_Stream::capacity));
    available = -1;
    EXPECT_NE(getElectrodeDataFifoState(no_slot, 1, 1, &available, &headroom), SUCCESS);
    EXPECT_EQ(available, 0);
    EXPECT_EQ(headroom, static_cast<int>(npoe_adapter::Electrode_Stream::capacity));
}

TEST_F(Shown, ADCStampsAndStatusAreThoseOfTheProbes) {
    open_usb();
    EXPECT_EQ(setSWTrigger(usb_slot), SUCCESS);
    const recording::RHD_Generator generator = rhd_generator();
    std::uint64_t sample = 0;
    for (const auto& row : read_adc(20'000, 12)) {
        ASSERT_EQ(row.info.Timestamp, static_cast<std::uint32_t>(sample * 10 / 3));
        const bool high = (generator.ttl_inputs(sample) & 0x100) != 0;
        ASSERT_EQ(row.info.Status, high ? ELECTRODEPACKET_STATUS_SYNC : 0) << sample;
        ++sample;
    }
}

TEST_F(Needed, ADCSettingsSucceed) {
    open_usb();
    EXPECT_EQ(ADC_enableProbe(usb_slot, true), SUCCESS);
    EXPECT_EQ(ADC_setVoltageRange(usb_slot, ADC_RANGE_5V), SUCCESS);
    for (int input = 0; input < 12; ++input) {
        EXPECT_EQ(ADC_setComparatorThreshold(usb_slot, input, 0.4, 1.1), SUCCESS);
        double low = 0.0;
        double high = 0.0;
        EXPECT_EQ(ADC_getComparatorThreshold(usb_slot, input, &low, &high), SUCCESS);
        EXPECT_EQ(low, 0.4);
        EXPECT_EQ(high, 1.1);
        EXPECT_EQ(DAC_enableOutput(usb_slot, input, true), SUCCESS);
    }
}

TEST_F(Shown, ThresholdsActOnTheComparators) {
    open_usb();
    EXPECT_EQ(ADC_setVoltageRange(usb_slot, ADC_RANGE_10V), SUCCESS);
    for (int input = 0; input < 8; ++input) {
        EXPECT_EQ(ADC_setComparatorThreshold(usb_slot, input, -1.0, 2.0), SUCCESS);
    }
    EXPECT_EQ(setSWTrigger(usb_slot), SUCCESS);
    const recording::RHD_Generator generator = rhd_generator();
    std::array<int, 8> expected{};
    std::array<bool, 8> changed{};
    std::uint64_t sample = 0;
    for (const auto& row : read_adc(20'000, 24)) {
        for (std::size_t input = 0; input < 8; ++input) {
            const double volts = (generator.adc_input(sample, input) - 32768) * 10.0 / 32768;
            const int before = expected[input];
            expected[input] = volts > 2.0 ? 1 : (volts < -1.0 ? 0 : before);
            changed[input] = changed[input] || expected[input] != before;
            ASSERT_EQ(row.samples[12 + input], expected[input]) << "input " << input << ", sample " << sample;
        }
        // The box's first four TTL inputs, which hosts would not see otherwise.
        for (std::size_t line = 0; line < 4; ++line) {
            ASSERT_EQ(row.samples[20 + line], (generator.ttl_inputs(sample) >> (8 + line)) & 1U) << sample;
        }
        ++sample;
    }
    EXPECT_TRUE(changed[0] && changed[1]);
}

// ---- Triggers, sync, standby.

TEST_F(Needed, TriggerSyncAndStandbyCallsSucceed) {
    open_pxi();
    bool connected = true;
    EXPECT_EQ(switchmatrix_clear(slot, SM_Output_StatusBit), SUCCESS);
    EXPECT_EQ(switchmatrix_get(slot, SM_Output_StatusBit, SM_Input_SMA, &connected), SUCCESS);
    EXPECT_FALSE(connected);
    EXPECT_EQ(switchmatrix_set(slot, SM_Output_StatusBit, SM_Input_SMA, true), SUCCESS);
    EXPECT_EQ(switchmatrix_get(slot, SM_Output_StatusBit, SM_Input_SMA, &connected), SUCCESS);
    EXPECT_TRUE(connected);
    EXPECT_EQ(setTriggerEdge(slot, true), SUCCESS);
    EXPECT_EQ(setParameter(NP_PARAM_SYNCMASTER, slot), SUCCESS);
    EXPECT_EQ(setParameter(NP_PARAM_SYNCSOURCE, SyncSource_Clock), SUCCESS);
    EXPECT_EQ(setParameter(NP_PARAM_SYNCFREQUENCY_HZ, 10), SUCCESS);
    EXPECT_EQ(setSyncClockFrequency(slot, 1.0), SUCCESS);
    EXPECT_EQ(setSyncClockPeriod(slot, 1000), SUCCESS);
    for (int channel = 0; channel < 384; ++channel) {
        EXPECT_EQ(setStdb(slot, 1, 1, channel, channel % 3 == 0), SUCCESS);
    }
}

TEST_F(Shown, StatusHasTheLevelOfTheSyncInput) {
    open_pxi();
    EXPECT_EQ(setSWTrigger(slot), SUCCESS);
    const recording::RHD_Generator generator = rhd_generator();
    bool seen[2] = {};
    for (const auto& packet : read_packets(1, 1600)) {
        for (std::size_t row = 0; row < 12; ++row) {
            const std::uint64_t sample = sample_of(packet.timestamp[row]);
            const bool high = (generator.ttl_inputs(sample) & 0x100) != 0;
            ASSERT_EQ(packet.Status[row], high ? ELECTRODEPACKET_STATUS_SYNC : 0) << sample;
            seen[high ? 1 : 0] = true;
        }
    }
    EXPECT_TRUE(seen[0] && seen[1]);
}

TEST_F(Shown, StatusHasTheLevelOfAnotherInputThatIsChosen) {
    open_pxi();
    EXPECT_EQ(switchmatrix_clear(slot, SM_Output_StatusBit), SUCCESS);
    EXPECT_EQ(switchmatrix_set(slot, SM_Output_StatusBit, SM_Input_PXI1, true), SUCCESS);
    EXPECT_EQ(setSWTrigger(slot), SUCCESS);
    const recording::RHD_Generator generator = rhd_generator();
    for (const auto& packet : read_packets(1, 1600)) {
        for (std::size_t row = 0; row < 12; ++row) {
            const std::uint64_t sample = sample_of(packet.timestamp[row]);
            const bool high = (generator.ttl_inputs(sample) & 0x400) != 0;
            ASSERT_EQ(packet.Status[row], high ? ELECTRODEPACKET_STATUS_SYNC : 0) << sample;
        }
    }
}

TEST_F(Shown, SyncClockThatIsAskedForShows) {
    open_usb();
    EXPECT_EQ(switchmatrix_clear(usb_slot, SM_Output_StatusBit), SUCCESS);
    EXPECT_EQ(setSyncClockPeriod(usb_slot, 100), SUCCESS);
    EXPECT_EQ(setSWTrigger(usb_slot), SUCCESS);
    for (const auto& packet : read_packets(1, 600, usb_slot)) {
        for (std::size_t row = 0; row < 12; ++row) {
            const bool high = sample_of(packet.timestamp[row]) % 3000 < 1500;
            ASSERT_EQ(packet.Status[row], high ? ELECTRODEPACKET_STATUS_SYNC : 0);
        }
    }
    for (const auto& row : read_adc(6000, 12)) {
        const bool high = sample_of(row.info.Timestamp) % 3000 < 1500;
        ASSERT_EQ(row.info.Status, high ? ELECTRODEPACKET_STATUS_SYNC : 0);
    }
}

// ---- Identity.

TEST_F(Needed, USBDeviceHasTwoPortsAndThePXIOneFour) {
    for (const auto& [line, platform, ports] :
         {std::tuple{"usb", NPPlatform_USB, 2}, {"", NPPlatform_USB, 2}, {"pxi", NPPlatform_PXI, 4}}) {
        select_host_mode(line);
        basestationID list[4]{};
        ASSERT_EQ(getDeviceList(list, 4), 1) << line;
        EXPECT_EQ(list[0].platformid, platform);
        int found = -1;
        ASSERT_TRUE(tryGetSlotID(list, &found));
        int count = 0;
        EXPECT_EQ(getBSCSupportedPortCount(found, &count), SUCCESS);
        EXPECT_EQ(count, ports);
        EXPECT_EQ(found >= 20, platform == NPPlatform_USB);
    }
}

TEST_F(Needed, DeviceWithoutADCInputsSaysSo) {
    open_pxi();
    int count = -1;
    EXPECT_EQ(ADC_readPackets(slot, nullptr, nullptr, 12, 10, &count), NOTSUPPORTED);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(ADC_enableProbe(slot, true), NOTSUPPORTED);
}

TEST_F(Needed, BothMeansTwoDevices) {
    select_host_mode("both");
    basestationID list[4]{};
    ASSERT_EQ(getDeviceList(list, 4), 2);
    EXPECT_EQ(list[0].platformid, NPPlatform_PXI);
    EXPECT_EQ(list[1].platformid, NPPlatform_USB);
}

TEST_F(Needed, FirmwareVersionsAreThoseOfTheSwitchFileAlsoBeforeOpening) {
    firmware_Info info{};
    select_host_mode("pxi");
    basestationID id{};
    ASSERT_EQ(getDeviceList(&id, 1), 1);
    EXPECT_EQ(bs_getFirmwareInfo(slot, &info), SUCCESS);
    EXPECT_EQ((std::array{info.major, info.minor, info.build}), (std::array{2, 0, 169}));
    EXPECT_EQ(bsc_getFirmwareInfo(slot, &info), SUCCESS);
    EXPECT_EQ((std::array{info.major, info.minor, info.build}), (std::array{3, 2, 189}));
    select_host_mode("pxi 3.0.226 4.0.233");
    ASSERT_EQ(getDeviceList(&id, 1), 1);
    EXPECT_EQ(bs_getFirmwareInfo(slot, &info), SUCCESS);
    EXPECT_EQ((std::array{info.major, info.minor, info.build}), (std::array{3, 0, 226}));
    EXPECT_EQ(bsc_getFirmwareInfo(slot, &info), SUCCESS);
    EXPECT_EQ((std::array{info.major, info.minor, info.build}), (std::array{4, 0, 233}));
}

TEST_F(Needed, HardwareIDsAreAnsweredWithoutOpeningAPort) {
    open_pxi();
    HardwareID id{};
    EXPECT_EQ(getBSCHardwareID(slot, &id), SUCCESS);
    EXPECT_STREQ(id.ProductNumber, "ORBE NA");
    EXPECT_EQ(std::uint64_t{id.SerialNumber}, 12345U);
    std::memset(&id, 0x55, sizeof id);
    EXPECT_EQ(getHeadstageHardwareID(slot, 2, &id), SUCCESS);
    EXPECT_STREQ(id.ProductNumber, "NP2_HS_30");
    EXPECT_EQ(id.version_Major, 1);
    EXPECT_EQ(id.version_Minor, 0);
    std::memset(&id, 0x55, sizeof id);
    EXPECT_EQ(getFlexHardwareID(slot, 2, 1, &id), SUCCESS);
    EXPECT_STREQ(id.ProductNumber, "Pelgar ORBE Flex");
    std::memset(&id, 0x55, sizeof id);
    EXPECT_EQ(getProbeHardwareID(slot, 2, 1, &id), SUCCESS);
    EXPECT_STREQ(id.ProductNumber, "PRB_1_4_0480_1");
    EXPECT_EQ(std::uint64_t{id.SerialNumber}, 0x1122334455667788U);
}

TEST_F(Shown, HeadstageHasTheNumberOfItsEEPROMOrADefault) {
    open_pxi();
    Virtual_Headstage& headstage = m_box->headstage(1);
    headstage.set(Virtual_Headstage::headstage_eeprom, 1, 0x03);
    headstage.set_text(Virtual_Headstage::headstage_eeprom, 10, "NPM_HS_01");
    HardwareID id{};
    EXPECT_EQ(getHeadstageHardwareID(slot, 2, &id), SUCCESS);
    EXPECT_STREQ(id.ProductNumber, "NPM_HS_01");
    headstage.set(Virtual_Headstage::headstage_eeprom, 0, 0x06);
    EXPECT_EQ(getHeadstageHardwareID(slot, 2, &id), SUCCESS);
    EXPECT_STREQ(id.ProductNumber, "NP2_HS_30") << "of a version that nobody knows";
}

TEST_F(Needed, HeadstageTesterIsNotThere) {
    open_pxi();
    int major = 0;
    int minor = 0;
    EXPECT_NE(HST_GetVersion(slot, 1, &major, &minor), SUCCESS);
}

TEST_F(Shown, SlotWhereNothingIsIsAnError) {
    select_host_mode("both");
    basestationID list[2]{};
    ASSERT_EQ(getDeviceList(list, 2), 2);
    for (int other = -1; other < 40; ++other) {
        basestationID info{NPPlatform_None, 0};
        const bool there = other == 2 || other == 20;
        EXPECT_EQ(getDeviceInfo(other, &info), there ? SUCCESS : NO_SLOT) << other;
        EXPECT_EQ(info.platformid != NPPlatform_None, there);
        int found = -1;
        EXPECT_EQ(tryGetSlotID(&info, &found) && found == other, there) << other;
    }
    EXPECT_EQ(mapBS(list[1].ID, 24), SUCCESS);
    basestationID info{};
    EXPECT_EQ(getDeviceInfo(24, &info), SUCCESS);
    EXPECT_EQ(info.platformid, NPPlatform_USB);
    EXPECT_EQ(getDeviceInfo(20, &info), NO_SLOT);
    EXPECT_EQ(mapBS(list[1].ID, 2), NO_SLOT) << "taken";
    EXPECT_EQ(mapBS(4711, 25), NO_SLOT) << "nobody";
    EXPECT_EQ(mapBS(list[1].ID, 20), SUCCESS);
}

TEST_F(Shown, GainsAndHeadstageNumberAreAnswered) {
    open_pxi();
    ASSERT_EQ(init(slot, 1, 1), SUCCESS);
    EXPECT_EQ(setGain(slot, 1, 1, 9, 6, 2), SUCCESS);
    int ap = -1;
    int lfp = -1;
    EXPECT_EQ(getGain(slot, 1, 1, 9, &ap, &lfp), SUCCESS);
    EXPECT_EQ(ap, 6);
    EXPECT_EQ(lfp, 2);
    uint64_t number = 0;
    EXPECT_EQ(readHSSN(slot, 1, &number), SUCCESS);
    EXPECT_NE(number, 0U);
}

TEST_F(Shown, EveryFailureHasAText) {
    open_pxi();
    const auto text_after = [](NP_ErrorCode result) {
        EXPECT_NE(result, SUCCESS);
        char text[256] = "";
        getLastErrorMessage(text, sizeof text);
        return std::string(text);
    };
    EXPECT_EQ(text_after(unmapBS(3)), "unmapBS : not supported by this box");
    EXPECT_EQ(text_after(getDeviceInfo(17, nullptr)), "getDeviceInfo : no basestation in the slot");
    EXPECT_EQ(text_after(openPort(slot, 9)), "openPort : no such port");
    EXPECT_EQ(text_after(HST_GetVersion(slot, 1, nullptr, nullptr)), "HST_GetVersion : the operation failed");
    EXPECT_EQ(text_after(openBS(3)), "openBS : no basestation in the slot");
    EXPECT_EQ(text_after(np_IMU_detect(slot, 1, nullptr)), "IMU_detect : not supported by this box");
    EXPECT_EQ(text_after(closeBS(slot) == SUCCESS ? arm(slot) : SUCCESS), "arm : not open");
}

// ---- Functions that newer lines import.

TEST_F(Needed, FunctionsOfNewerLinesAnswer) {
    open_usb();
    EXPECT_EQ(np_setSyncClockPeriod(usb_slot, 500), SUCCESS);
    EXPECT_EQ(np_setSyncClockFrequency(usb_slot, 2.0), SUCCESS);
    driver_version required{9, 9, 9};
    driver_version current{9, 9, 9};
    bool present = false;
    bool right = false;
    EXPECT_EQ(np_checkFtdiDriver(&required, &current, &present, &right), SUCCESS);
    EXPECT_TRUE(present && right);
    EXPECT_EQ(std::memcmp(&required, &current, sizeof required), 0);
    EXPECT_EQ(np_checkBasestationSupported(usb_slot), SUCCESS);
    firmware_Info info{};
    EXPECT_EQ(np_ob_getFirmwareInfo(usb_slot, &info), SUCCESS);
    EXPECT_STREQ(info.name, "ORBE 1.0");
    EXPECT_EQ(np_bs_resetFirmware(usb_slot), NOTSUPPORTED);
    EXPECT_EQ(np_bsc_resetFirmware(usb_slot), NOTSUPPORTED);
}

TEST_F(Needed, CTwinsAnswerAsTheirFunctions) {
    open_pxi();
    uint64_t number = 0;
    EXPECT_EQ(np_readHSSN(slot, 1, &number), SUCCESS);
    EXPECT_NE(number, 0U);
    char text[40] = "";
    EXPECT_EQ(np_readProbePN(slot, 1, 1, text, sizeof text), SUCCESS);
    EXPECT_STREQ(text, "PRB_1_4_0480_1");
    EXPECT_EQ(np_readFlexPN(slot, 1, 1, text, sizeof text), SUCCESS);
    EXPECT_STREQ(text, "Pelgar ORBE Flex");
}

// ---- The switch.

TEST_F(Needed, SwitchFileThatSaysNothingKnownFailsTheOpening) {
    select_host_mode("onebox");
    basestationID list[2]{};
    EXPECT_EQ(getDeviceList(list, 2), 0);
    EXPECT_EQ(openBS(20), VERSION_MISMATCH);
    EXPECT_EQ(m_log.count("ORBE_HOST_MODE : \"onebox\" is none of usb, pxi, both"), 2);
    char text[256] = "";
    getLastErrorMessage(text, sizeof text);
    EXPECT_STREQ(text, "ORBE_HOST_MODE : \"onebox\" is none of usb, pxi, both");
}

TEST_F(Needed, WithoutTheSwitchFileTheBoxIsItselfAgain) {
    open_pxi();
    EXPECT_EQ(closeBS(slot), SUCCESS);
    std::filesystem::remove("ORBE_HOST_MODE");
    basestationID id{};
    EXPECT_EQ(getDeviceList(&id, 1), 1);
    EXPECT_EQ(id.platformid, NPPlatform_USB);
    EXPECT_EQ(id.ID, 1);
    EXPECT_EQ(detectBS(0, nullptr), NOTSUPPORTED);
}

} // namespace
