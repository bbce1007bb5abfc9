// Calls of several threads that meet: slots that move under a call, and openings, closings, triggers and arms
// at the same time. On the virtual box.
#include "Box_Row.h"

#include "Waiter_Guard.h"

#include <modes/Current_Mode.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

namespace {

using namespace Neuropixels;
using namespace Pelgar::ORBE;
using namespace Pelgar::ORBE::test;

class Host_Overlap : public Box_Row {
protected:
    static constexpr int other_slot = 21;
    static constexpr int enough = 1000;

    ~Host_Overlap() override { mapBS(1, usb_slot); }

private:
    Waiter_Guard m_waiter;
};

TEST_F(Host_Overlap, ADeviceThatMovesIsInItsSlotOrInNone) {
    open_usb();
    std::atomic<bool> is_moving{true};
    std::thread mover([&] {
        while (is_moving) {
            EXPECT_EQ(mapBS(1, other_slot), SUCCESS);
            EXPECT_EQ(mapBS(1, usb_slot), SUCCESS);
        }
    });
    int found = 0;
    int missed = 0;
    const auto last = std::chrono::steady_clock::now() + patience;
    while ((found < enough || missed < enough) && std::chrono::steady_clock::now() < last) {
        int ports = 0;
        int available = 0;
        int headroom = 0;
        const auto counted = getBSCSupportedPortCount(usb_slot, &ports);
        const auto state = getElectrodeDataFifoState(usb_slot, 2, 1, &available, &headroom);
        const auto adc_state = ADC_getPacketFifoStatus(usb_slot, &available, &headroom);
        const auto triggered = setSWTrigger(usb_slot);
        EXPECT_EQ(ports, counted == SUCCESS ? 2 : 0);
        for (const auto result : {counted, state, adc_state, triggered}) {
            EXPECT_TRUE(result == SUCCESS || result == NO_SLOT) << result;
            ++(result == SUCCESS ? found : missed);
        }
    }
    is_moving = false;
    mover.join();
    EXPECT_GE(found, enough);
    EXPECT_GE(missed, enough);
}

TEST_F(Host_Overlap, ADeviceThatMovesWhileItIsOpenedIsOpen) {
    select_host_mode("usb");
    auto make = *npoe_adapter::g_controller_factory;
    *npoe_adapter::g_controller_factory = [&](bool simulation) {
        // Not by the exported function, which would wait for the opening in which this thread is.
        EXPECT_EQ(npoe_adapter::current_mode().mapBS(1, other_slot), SUCCESS);
        return make(simulation);
    };
    ASSERT_EQ(openBS(usb_slot), SUCCESS);
    EXPECT_EQ(arm(usb_slot), NO_SLOT);
    EXPECT_EQ(arm(other_slot), SUCCESS);
    EXPECT_EQ(closeBS(other_slot), SUCCESS);
    EXPECT_EQ(arm(other_slot), NOT_OPEN);
}

TEST_F(Host_Overlap, OpeningsClosingsTriggersAndArmsMayMeet) {
    open_usb();
    std::vector<std::thread> hosts;
    for (int host = 0; host < 6; ++host) {
        hosts.emplace_back([host] {
            for (int round = 0; round < 60; ++round) {
                switch ((host + round) % 6) {
                case 0:
                    closeBS(usb_slot);
                    break;
                case 1:
                case 2:
                    EXPECT_EQ(openBS(usb_slot), SUCCESS);
                    break;
                case 3:
                    arm(usb_slot);
                    break;
                default:
                    setSWTrigger(usb_slot);
                    break;
                }
            }
        });
    }
    for (std::thread& host : hosts) {
        host.join();
    }
    EXPECT_EQ(closeBS(usb_slot), SUCCESS);
    open_usb();
    EXPECT_EQ(setSWTrigger(usb_slot), SUCCESS);
    EXPECT_EQ(read_adc(1, 24).size(), 1U) << "nothing is left of what went before";
    EXPECT_EQ(arm(usb_slot), SUCCESS);
}

} // namespace
