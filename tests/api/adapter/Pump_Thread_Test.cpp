// Ending the pump's thread from several threads at once.
#include "API_Fixture.h"

#include <adapter/Pump_Thread.h>

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <memory>
#include <thread>

namespace {

using namespace std::chrono_literals;
using namespace Pelgar::ORBE::npoe_adapter;

class Pump_Thread : public Pelgar::ORBE::test::API_Fixture {
protected:
    // A pump that takes its time to end.
    static void start_slow_pump() {
        g_stop_requested = false;
        *g_pump_thread = std::make_unique<std::thread>([] {
            while (!g_stop_requested) {
                std::this_thread::yield();
            }
            std::this_thread::sleep_for(20ms);
            g_pump_ended = true;
        });
    }
};

TEST_F(Pump_Thread, IsJoinedOnceHoweverManyEndIt) {
    for (int round = 0; round < 20; ++round) {
        g_pump_ended = false;
        start_slow_pump();
        std::array<std::thread, 4> enders;
        for (std::thread& ender : enders) {
            ender = std::thread([] {
                end_pump_thread();
                EXPECT_TRUE(g_pump_ended) << "it returned while the pump ran";
                EXPECT_FALSE(has_pump_thread());
            });
        }
        for (std::thread& ender : enders) {
            ender.join();
        }
    }
}

TEST_F(Pump_Thread, EndsAlsoWhenItIsStartedWhileAnotherThreadEndsThePumps) {
    open_simulation();
    std::thread starter([] {
        for (int round = 0; round < 50; ++round) {
            end_pump_thread();
            start_pump_thread(current_controller(), 0, 1);
        }
    });
    for (int round = 0; round < 50; ++round) {
        end_pump_thread();
    }
    starter.join();
    end_pump_thread();
    EXPECT_FALSE(has_pump_thread());
    EXPECT_TRUE(g_stop_requested);
}

} // namespace
