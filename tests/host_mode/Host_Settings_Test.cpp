// What a host sets: the sync clock by every way there is to ask for it, and that an opening begins with
// nothing that was set before it. On the virtual box.
#include "Held_Box.h"
#include "Port_Check.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace {

using namespace Neuropixels;
using namespace Pelgar::ORBE::test;

constexpr int period_ms = 20;
constexpr std::uint64_t period = 600; // samples

class Host_Settings : public Held_Box {
protected:
    // Nothing but the clock is to show.
    void open_without_inputs() {
        open_usb();
        EXPECT_EQ(switchmatrix_clear(usb_slot, SM_Output_StatusBit), SUCCESS);
    }

    static void expect_clock() {
        EXPECT_EQ(setSWTrigger(usb_slot), SUCCESS);
        const auto packets = read_packets(2, 150, usb_slot);
        ASSERT_EQ(packets.size(), 150U);
        for (const auto& packet : packets) {
            for (std::size_t row = 0; row < 12; ++row) {
                ASSERT_EQ(packet.Status[row], status_at(sample_of(packet.timestamp[row])));
            }
        }
        const auto rows = read_adc(1800, 12);
        ASSERT_EQ(rows.size(), 1800U);
        for (const auto& row : rows) {
            ASSERT_EQ(row.info.Status, status_at(sample_of(row.info.Timestamp)));
        }
    }

private:
    static int status_at(std::uint64_t sample) {
        return sample % period < period / 2 ? ELECTRODEPACKET_STATUS_SYNC : 0;
    }
};

TEST_F(Host_Settings, SyncClockShowsOnceItsFrequencyIsSet) {
    open_without_inputs();
    EXPECT_EQ(setSyncClockFrequency(usb_slot, 1000.0 / period_ms), SUCCESS);
    expect_clock();
}

TEST_F(Host_Settings, SyncClockShowsOnceItIsTheSyncSourceWithItsPeriod) {
    open_without_inputs();
    EXPECT_EQ(setParameter(NP_PARAM_SYNCPERIOD_MS, period_ms), SUCCESS);
    EXPECT_EQ(setParameter(NP_PARAM_SYNCSOURCE, SyncSource_Clock), SUCCESS);
    expect_clock();
}

TEST_F(Host_Settings, SyncClockShowsOnceItIsTheSyncSourceWithItsFrequency) {
    open_without_inputs();
    EXPECT_EQ(setParameter(NP_PARAM_SYNCFREQUENCY_HZ, 1000 / period_ms), SUCCESS);
    EXPECT_EQ(setParameter(NP_PARAM_SYNCSOURCE, SyncSource_Clock), SUCCESS);
    expect_clock();
}

TEST_F(Host_Settings, SyncClockShowsOnceItIsLedToTheStatusBit) {
    open_without_inputs();
    EXPECT_EQ(setParameter(NP_PARAM_SYNCPERIOD_MS, period_ms), SUCCESS);
    EXPECT_EQ(switchmatrix_set(usb_slot, SM_Output_StatusBit, SM_Input_SyncClk, true), SUCCESS);
    expect_clock();
}

TEST_F(Host_Settings, SyncClockIsGoneOnceAnotherSourceIsChosen) {
    open_without_inputs();
    EXPECT_EQ(setSyncClockPeriod(usb_slot, period_ms), SUCCESS);
    EXPECT_EQ(setParameter(NP_PARAM_SYNCSOURCE, SyncSource_SMA), SUCCESS);
    EXPECT_EQ(setSWTrigger(usb_slot), SUCCESS);
    const auto packets = read_packets(1, 100, usb_slot);
    ASSERT_EQ(packets.size(), 100U);
    for (const auto& packet : packets) {
        for (const std::uint16_t status : packet.Status) {
            ASSERT_EQ(status, 0);
        }
    }
}

TEST_F(Host_Settings, OpeningBeginsWithTheFirstInputAndNoClock) {
    open_without_inputs();
    EXPECT_EQ(switchmatrix_set(usb_slot, SM_Output_StatusBit, SM_Input_PXI0, true), SUCCESS);
    EXPECT_EQ(setSyncClockPeriod(usb_slot, period_ms), SUCCESS);
    EXPECT_EQ(closeBS(usb_slot), SUCCESS);
    ASSERT_EQ(openBS(usb_slot), SUCCESS);
    bool connected = false;
    EXPECT_EQ(switchmatrix_get(usb_slot, SM_Output_StatusBit, SM_Input_SMA, &connected), SUCCESS);
    EXPECT_TRUE(connected);
    EXPECT_EQ(switchmatrix_get(usb_slot, SM_Output_StatusBit, SM_Input_PXI0, &connected), SUCCESS);
    EXPECT_FALSE(connected);
    EXPECT_EQ(setSWTrigger(usb_slot), SUCCESS);
    const auto generator = rhd_generator();
    std::uint64_t frame = 0;
    for (const auto& row : read_adc(1500, 12)) {
        const bool high = (generator.ttl_inputs(frame) & 0x100) != 0;
        ASSERT_EQ(row.info.Status, high ? ELECTRODEPACKET_STATUS_SYNC : 0) << frame;
        ++frame;
    }
    EXPECT_EQ(frame, 1500U);
}

TEST_F(Host_Settings, OpeningBeginsWithTheADCInputsAsTheyWereMade) {
    open_usb();
    EXPECT_EQ(ADC_setVoltageRange(usb_slot, ADC_RANGE_10V), SUCCESS);
    EXPECT_EQ(ADC_setComparatorThreshold(usb_slot, 3, -2.5, 3.5), SUCCESS);
    EXPECT_EQ(closeBS(usb_slot), SUCCESS);
    ASSERT_EQ(openBS(usb_slot), SUCCESS);
    ADCrange_t range{};
    EXPECT_EQ(ADC_getVoltageRange(usb_slot, &range), SUCCESS);
    EXPECT_EQ(range, ADC_RANGE_5V);
    double low = 0.0;
    double high = 0.0;
    EXPECT_EQ(ADC_getComparatorThreshold(usb_slot, 3, &low, &high), SUCCESS);
    EXPECT_EQ(low, 0.8);
    EXPECT_EQ(high, 2.0);
}

TEST_F(Host_Settings, ADCReadWithANegativeRowLengthIsRefused) {
    open_usb();
    EXPECT_EQ(setSWTrigger(usb_slot), SUCCESS);
    EXPECT_EQ(read_adc(10, 12).size(), 10U);
    PacketInfo info;
    int16_t row[12];
    int count = -77;
    EXPECT_EQ(ADC_readPackets(usb_slot, &info, row, -1, 1, &count), PARAMETER_INVALID);
    EXPECT_EQ(count, 0);
}

} // namespace
