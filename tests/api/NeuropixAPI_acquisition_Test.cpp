// Starting, stopping and reading probe packets.
#include "API_Fixture.h"
#include "Invalid_Subscript.h"
#include "On_Log_Line.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstring>
#include <limits>
#include <memory>
#include <regex>
#include <stdexcept>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#if defined(__linux__)
#include "Unprivileged_User.h"
#endif

namespace {

using namespace std::chrono_literals;
using namespace Neuropixels;
using namespace Pelgar::ORBE::npoe_adapter;
using Pelgar::ORBE::test::API_Fixture;
using Pelgar::ORBE::test::expect_invalid_subscript;
using Pelgar::ORBE::test::On_Log_Line;

electrodePacket numbered_packet(std::uint32_t number) {
    electrodePacket packet{};
    packet.timestamp[0] = number;
    packet.apData[11][383] = static_cast<std::int16_t>(number);
    packet.lfpData[383] = static_cast<std::int16_t>(number + 1);
    return packet;
}

class Acquisition : public API_Fixture {
protected:
    static void queue_packets(int port, std::uint32_t count) {
        for (std::uint32_t number = 0; number < count; ++number) {
            current_np_converter(port)->queue().push(numbered_packet(number));
        }
    }
};

TEST_F(Acquisition, StartEnablesTheStreamsAndStartsThePump) {
    open_simulation();
    testing::internal::CaptureStdout();
    EXPECT_EQ(start_acquisition(3, 2), SUCCESS);
    wait_for_log("slotID 3, portID 2 : Main pump thread started");
    EXPECT_EQ(stop_acquisition(3, 2), SUCCESS);
    const std::string printed = testing::internal::GetCapturedStdout();
    EXPECT_NE(printed.find("resume streaming (simulation)\n"), std::string::npos);
    EXPECT_TRUE(m_log.has_scope(0, "start_acquisition"));
    EXPECT_EQ(m_log.count(0, "starting acquisition : slotID : 3, portID : 2"), 1);
    EXPECT_EQ(m_log.count(1, "slotID 3, portID 2 : Main pump thread started"), 1);
}

TEST_F(Acquisition, SecondStartDoesNothing) {
    open_simulation();
    EXPECT_EQ(start_acquisition(0, 1), SUCCESS);
    const auto* const pump = g_pump_thread->get();
    EXPECT_EQ(start_acquisition(0, 2), SUCCESS);
    EXPECT_EQ(g_pump_thread->get(), pump);
    EXPECT_EQ(stop_acquisition(0, 1), SUCCESS);
    EXPECT_EQ(m_log.count("slotID 0, portID 2 : Main pump thread started"), 0);
}

TEST_F(Acquisition, StopWithoutAStartReturnsAtOnce) {
    open_simulation();
    EXPECT_EQ(stop_acquisition(6, 1), SUCCESS);
    EXPECT_TRUE(m_log.has_scope(0, "stop_acquisition"));
    EXPECT_EQ(m_log.count(0, "slotID : 6, portID : 1"), 1);
    EXPECT_EQ(m_log.count("Stopping main stream. (6)"), 0);
    EXPECT_FALSE(g_stop_requested);
}

TEST_F(Acquisition, StopDisablesStreamsAndJoinsThePump) {
    open_simulation();
    EXPECT_EQ(start_acquisition(6, 1), SUCCESS);
    testing::internal::CaptureStdout();
    EXPECT_EQ(stop_acquisition(6, 1), SUCCESS);
    const std::string printed = testing::internal::GetCapturedStdout();
    EXPECT_NE(printed.find("pause streaming (simulation)\n"), std::string::npos);
    EXPECT_EQ(m_log.count(0, "Stopping main stream. (6)"), 1);
    EXPECT_EQ(m_log.count(0, "End of main pump thread (6,1)"), 1);
    EXPECT_TRUE(g_pump_ended);
    EXPECT_TRUE(g_stop_requested);
    EXPECT_FALSE(*g_pump_thread);
    EXPECT_EQ(start_acquisition(6, 1), SUCCESS);
    EXPECT_FALSE(g_stop_requested);
    EXPECT_TRUE(*g_pump_thread);
}

TEST_F(Acquisition, StopDisablesTheStreamsBeforeItStopsThePumpAndItsReaders) {
    open_simulation();
    EXPECT_EQ(start_acquisition(6, 1), SUCCESS);
    bool running = true;
    bool stopping = true;
    const On_Log_Line watch("{ disable_streaming", [&] {
        running = g_acquisition_running;
        stopping = g_stop_requested;
    });
    EXPECT_EQ(stop_acquisition(6, 1), SUCCESS);
    EXPECT_EQ(watch.times(), 1);
    EXPECT_FALSE(running);
    EXPECT_FALSE(stopping);
    EXPECT_TRUE(g_stop_requested);
}

#if defined(__linux__)
TEST_F(Acquisition, StartThatGetsNoThreadSwitchesTheStreamsOffAgain) {
    open_simulation();
    wait_for_quiet_log();
    {
        const Pelgar::ORBE::test::Unprivileged_User user(RLIMIT_NPROC);
        try {
            start_acquisition(0, 1);
            ADD_FAILURE() << "nothing was thrown";
        } catch (const std::system_error& error) {
            EXPECT_EQ(error.code(), std::errc::resource_unavailable_try_again);
        }
    }
    EXPECT_TRUE(m_log.has_scope(0, "disable_streaming"));
    EXPECT_FALSE(g_acquisition_running);
    EXPECT_FALSE(*g_pump_thread);
    EXPECT_EQ(start_acquisition(0, 1), SUCCESS);
    EXPECT_TRUE(*g_pump_thread);
}

#endif

TEST_F(Acquisition, StartOverAThreadThatNobodyHasJoinedEndsTheProcess) {
    EXPECT_DEATH(
        {
            open_simulation();
            *g_pump_thread = std::make_unique<std::thread>([] {});
            start_acquisition(0, 1);
        },
        "terminat"); // so std::terminate says
}

TEST_F(Acquisition, PumpThatBreaksOffLeavesItsEndedFlagClear) {
    open_simulation(2 * mebibyte);
    EXPECT_EQ(start_acquisition(4, 3), SUCCESS);
    wait_for_log("error in main pump thread (4,3)");
    EXPECT_FALSE(g_pump_ended);
    EXPECT_EQ(m_log.count("End of main pump thread (4,3)"), 0);
    EXPECT_EQ(closeBS(4), SUCCESS);
    EXPECT_FALSE(*g_pump_thread);
}

TEST_F(Acquisition, ExceptionOutOfThePumpIsLoggedAndEndsItInTheSameWay) {
    open_simulation();
    std::atomic<bool> thrown{false};
    m_waiter.on_wait([&](std::size_t) {
        if (!thrown.exchange(true)) {
            throw std::runtime_error("no time left");
        }
    });
    EXPECT_EQ(start_acquisition(4, 3), SUCCESS);
    wait_for_log("error in main pump thread (4,3)");
    EXPECT_TRUE(thrown);
    EXPECT_EQ(m_log.count(-2, "main pump thread : no time left"), 1);
    EXPECT_EQ(m_log.count("End of main pump thread (4,3)"), 0);
    EXPECT_FALSE(g_pump_ended);
    EXPECT_EQ(closeBS(4), SUCCESS);
    EXPECT_FALSE(*g_pump_thread);
}

TEST_F(Acquisition, StopAfterThePumpBrokeOffWaitsForEver) {
    open_simulation(2 * mebibyte);
    EXPECT_EQ(start_acquisition(4, 3), SUCCESS);
    wait_for_log("error in main pump thread (4,3)");
    constexpr std::size_t patience = 25;
    m_waiter.on_wait([&](std::size_t) {
        if (m_waiter.count(1000ms) == patience) {
            g_pump_ended = true;
        }
    });
    EXPECT_EQ(stop_acquisition(4, 3), SUCCESS);
    EXPECT_EQ(m_waiter.count(1000ms), patience);
    EXPECT_EQ(m_log.count(0, "Waiting main pump to stop. (4)"), static_cast<int>(patience));
}

TEST_F(Acquisition, StopThatWaitsForEverKeepsNobodyFromStartingAnew) {
    open_simulation(2 * mebibyte);
    EXPECT_EQ(start_acquisition(4, 3), SUCCESS);
    wait_for_log("error in main pump thread (4,3)");
    std::thread stopping([] { EXPECT_EQ(stop_acquisition(4, 3), SUCCESS); });
    wait_for_log("Waiting main pump to stop. (4)");
    EXPECT_EQ(bistPSB(4, 3, 0), FAILED);
    EXPECT_EQ(m_log.count(-2, "bistPSB needs the stream, which an acquisition uses"), 1)
        << "the pump that broke off is still there";
    EXPECT_EQ(closeBS(4), SUCCESS);
    open_simulation();
    EXPECT_EQ(start_acquisition(4, 2), SUCCESS);
    EXPECT_TRUE(*g_pump_thread);
    EXPECT_EQ(stop_acquisition(4, 2), SUCCESS);
    stopping.join();
    EXPECT_FALSE(*g_pump_thread);
}

TEST_F(Acquisition, StartWithoutAnOpenBasestationIsLogged) {
    EXPECT_EQ(start_acquisition(0, 1), SUCCESS);
    EXPECT_EQ(m_log.count(-2, "start_acquisition : no basestation is open"), 1);
    EXPECT_FALSE(g_acquisition_running);
    EXPECT_EQ(stop_acquisition(0, 1), SUCCESS);
}

TEST_F(Acquisition, ReadCopiesWholePacketsInOrderAndRemovesThem) {
    open_simulation();
    queue_packets(3, 5);
    std::vector<electrodePacket> packets(4);
    int actual = -1;
    EXPECT_EQ(readElectrodeData(0, 3, 0, packets.data(), &actual, 4), SUCCESS);
    EXPECT_EQ(actual, 4);
    for (std::uint32_t number = 0; number < 4; ++number) {
        const electrodePacket expected = numbered_packet(number);
        EXPECT_EQ(std::memcmp(&packets[number], &expected, sizeof(expected)), 0);
    }
    EXPECT_EQ(current_np_converter(3)->queue().size(), 1U);
}

TEST_F(Acquisition, ReadBlocksUntilAllRequestedPacketsAreThere) {
    open_simulation();
    std::vector<electrodePacket> packets(3);
    std::atomic<int> amount{-1};
    std::thread reader([&] {
        int actual = -1;
        readElectrodeData(0, 1, 0, packets.data(), &actual, 3);
        amount = actual;
    });
    queue_packets(1, 2);
    while (current_np_converter(1)->queue().size() != 0) {
        std::this_thread::yield();
    }
    EXPECT_EQ(amount, -1) << "two of three packets are not enough";
    queue_packets(1, 1);
    reader.join();
    EXPECT_EQ(amount, 3);
}

TEST_F(Acquisition, ReadOfNothingAnswersForEveryPort) {
    open_simulation();
    for (const int port : {1, 4, 7, 0, -3}) {
        int actual = -1;
        EXPECT_NO_THROW(EXPECT_EQ(readElectrodeData(0, port, 0, nullptr, &actual, 0), SUCCESS));
        EXPECT_EQ(actual, 0);
    }
}

TEST_F(Acquisition, ReadOfAPortThatDoesNotExistThrows) {
    open_simulation();
    electrodePacket packet;
    int actual = -1;
    for (const int port : {0, 5, 7, -1, std::numeric_limits<int>::min()}) {
        expect_invalid_subscript([&] { readElectrodeData(0, port, 0, &packet, &actual, 1); });
    }
}

TEST_F(Acquisition, NegativeRequestReadsNothing) {
    open_simulation();
    queue_packets(1, 1);
    int actual = -1;
    EXPECT_EQ(readElectrodeData(0, 1, 0, nullptr, &actual, -5), SUCCESS);
    EXPECT_EQ(actual, 0);
    EXPECT_EQ(current_np_converter(1)->queue().size(), 1U);
}

TEST_F(Acquisition, NullOutputsAreSkipped) {
    open_simulation();
    queue_packets(1, 2);
    EXPECT_EQ(readElectrodeData(0, 1, 0, nullptr, nullptr, 2), SUCCESS);
    EXPECT_EQ(current_np_converter(1)->queue().size(), 0U);
    EXPECT_EQ(getElectrodeDataFifoState(0, 1, 0, nullptr, nullptr), SUCCESS);
}

TEST_F(Acquisition, AfterAStopNothingIsRemoved) {
    open_simulation();
    EXPECT_EQ(start_acquisition(0, 1), SUCCESS);
    EXPECT_EQ(stop_acquisition(0, 1), SUCCESS);
    queue_packets(2, 3);
    std::vector<electrodePacket> packets(3);
    int actual = -1;
    EXPECT_EQ(readElectrodeData(0, 2, 0, packets.data(), &actual, 3), SUCCESS);
    EXPECT_EQ(actual, 0);
    EXPECT_EQ(current_np_converter(2)->queue().size(), 3U);
}

TEST_F(Acquisition, BlockedReaderReturnsWithItsCountOnceTheBasestationCloses) {
    open_simulation();
    queue_packets(1, 2);
    const auto converter = current_np_converter(1);
    std::vector<electrodePacket> packets(3);
    std::atomic<int> amount{-1};
    std::thread reader([&] {
        int actual = -1;
        readElectrodeData(0, 1, 0, packets.data(), &actual, 3);
        amount = actual;
    });
    while (converter->queue().size() != 0) {
        std::this_thread::yield();
    }
    EXPECT_EQ(start_acquisition(0, 1), SUCCESS);
    EXPECT_EQ(stop_acquisition(0, 1), SUCCESS);
    EXPECT_EQ(amount, -1) << "the stop alone does not wake a blocked reader";
    EXPECT_EQ(closeBS(0), SUCCESS);
    reader.join();
    EXPECT_EQ(amount, 2);
}

TEST_F(Acquisition, SeveralReadersOfAPortShareItsPacketsAndAllWakeOnClose) {
    open_simulation();
    constexpr int total = 400;
    std::atomic<int> received{0};
    std::atomic<long> sum{0};
    std::vector<std::thread> readers;
    for (int i = 0; i < 3; ++i) {
        readers.emplace_back([&] {
            electrodePacket packet;
            for (int actual = 1; actual == 1;) {
                readElectrodeData(0, 1, 0, &packet, &actual, 1);
                received += actual;
                sum += actual * static_cast<long>(packet.timestamp[0]);
            }
        });
    }
    queue_packets(1, total);
    while (received < total) {
        std::this_thread::yield();
    }
    EXPECT_EQ(closeBS(0), SUCCESS);
    for (std::thread& reader : readers) {
        reader.join();
    }
    EXPECT_EQ(received, total);
    EXPECT_EQ(sum, total * (total - 1L) / 2);
}

TEST_F(Acquisition, ReadsAfterClosingAnswerNothing) {
    open_simulation();
    queue_packets(1, 1);
    EXPECT_EQ(closeBS(0), SUCCESS);
    electrodePacket packet;
    int actual = -1;
    EXPECT_EQ(readElectrodeData(0, 1, 0, &packet, &actual, 1), SUCCESS);
    EXPECT_EQ(actual, 0);
    int headroom = -1;
    EXPECT_EQ(getElectrodeDataFifoState(0, 1, 0, &actual, &headroom), SUCCESS);
    EXPECT_EQ(actual, 0);
    EXPECT_EQ(headroom, 500);
}

TEST_F(Acquisition, FifoStateCountsDownToMinusOne) {
    open_simulation();
    int available = -1;
    int headroom = -1;
    EXPECT_EQ(getElectrodeDataFifoState(0, 2, 0, &available, &headroom), SUCCESS);
    EXPECT_EQ(available, 0);
    EXPECT_EQ(headroom, 500);
    queue_packets(2, 3);
    EXPECT_EQ(getElectrodeDataFifoState(0, 2, 0, &available, &headroom), SUCCESS);
    EXPECT_EQ(available, 3);
    EXPECT_EQ(headroom, 497);
    queue_packets(2, 600);
    EXPECT_EQ(getElectrodeDataFifoState(0, 2, 0, &available, &headroom), SUCCESS);
    EXPECT_EQ(available, 501);
    EXPECT_EQ(headroom, -1);
    expect_invalid_subscript([&] { getElectrodeDataFifoState(0, 5, 0, &available, &headroom); });
    expect_invalid_subscript([&] { getElectrodeDataFifoState(0, 0, 0, &available, &headroom); });
}

TEST_F(Acquisition, ReadingLogsNothing) {
    open_simulation();
    queue_packets(1, 2);
    wait_for_quiet_log();
    m_log.clear();
    std::vector<electrodePacket> packets(2);
    int first = -1;
    int second = -1;
    EXPECT_EQ(getElectrodeDataFifoState(0, 1, 0, &first, &second), SUCCESS);
    EXPECT_EQ(first, 2);
    EXPECT_EQ(readElectrodeData(0, 1, 0, packets.data(), &first, 2), SUCCESS);
    EXPECT_EQ(first, 2);
    Pelgar::ORBE::demux::RHD_Frame frame;
    current_rhd_converter()->publish_rhd_frame(frame);
    PacketInfo info{};
    EXPECT_EQ(ADC_readPackets(0, &info, nullptr, 12, 1, &first), SUCCESS);
    EXPECT_EQ(first, 1);
    EXPECT_EQ(m_log.lines().size(), 0U);
}

TEST_F(Acquisition, FirstReadOfAPortMayReportThroughput) {
    open_simulation();
    queue_packets(2, 1);
    electrodePacket packet;
    int actual = 0;
    testing::internal::CaptureStdout();
    EXPECT_EQ(readElectrodeData(0, 2, 0, &packet, &actual, 1), SUCCESS);
    EXPECT_TRUE(
        std::regex_match(testing::internal::GetCapturedStdout(),
                         std::regex("1 electrode packet transferred\\. NP port : 1, data : \\d+ MB/s\n")))
        << "the clock has run for seconds since it was never looked at";
}

} // namespace
