// Devices, opening and closing.
#include "API_Fixture.h"
#include "On_Log_Line.h"

#include <gtest/gtest.h>
#include <loguru.hpp>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <limits>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#if defined(__linux__)
#include "Folder_Controller.h"

#include <sys/stat.h>
#include <unistd.h>
#endif

namespace {

using namespace Neuropixels;
using namespace Pelgar::ORBE::npoe_adapter;
using Pelgar::ORBE::ORBE_Controller_Library;
using Pelgar::ORBE::test::API_Fixture;
using Pelgar::ORBE::test::On_Log_Line;
#if defined(__linux__)
using Pelgar::ORBE::test::Folder_Controller;
#endif

std::string content_of(const char* path) {
    std::ostringstream content;
    content << std::ifstream(path).rdbuf();
    return content.str();
}

class Devices : public API_Fixture {};

TEST_F(Devices, DeviceListNamesTheOneBasestation) {
    basestationID list[2] = {};
    EXPECT_EQ(getDeviceList(list, 2), 1);
    EXPECT_EQ(list[0].platformid, 2);
    EXPECT_EQ(list[0].ID, 1);
    EXPECT_EQ(list[1].ID, 0);
    EXPECT_TRUE(m_log.has_scope(0, "getDeviceList"));
    EXPECT_EQ(m_log.count(0, "count : 2"), 1);
}

TEST_F(Devices, FirstDeviceListOfTheProcessStartsTheLogFile) {
    std::ofstream("ORBE.log") << "a line from an earlier process\n";
    EXPECT_TRUE(g_log_file_pending);
    basestationID device{};
    EXPECT_EQ(getDeviceList(&device, 1), 1);
    EXPECT_FALSE(g_log_file_pending);
    ASSERT_TRUE(std::filesystem::exists("ORBE.log"));
    VLOG_F(9, "a line between the calls");
    EXPECT_EQ(getDeviceList(&device, 1), 1);
    const std::string log = content_of("ORBE.log");
    EXPECT_EQ(log.find("an earlier process"), std::string::npos) << "the file starts empty";
    EXPECT_NE(log.find("a line between the calls"), std::string::npos) << "the file takes verbosity 9";
    EXPECT_NE(log.find("count : 1"), std::string::npos);
}

TEST_F(Devices, DeviceListWithoutRoomWritesNothing) {
    basestationID device{};
    EXPECT_EQ(getDeviceList(nullptr, 1), 1);
    EXPECT_EQ(getDeviceList(&device, 0), 1);
    EXPECT_EQ(device.ID, 0);
}

TEST_F(Devices, DeviceInfoIsTheSameForEverySlot) {
    for (const int slot : {0, 7, -1}) {
        basestationID info{};
        EXPECT_EQ(getDeviceInfo(slot, &info), SUCCESS);
        EXPECT_EQ(info.platformid, 2);
        EXPECT_EQ(info.ID, 1);
    }
    EXPECT_EQ(getDeviceInfo(0, nullptr), SUCCESS);
    EXPECT_TRUE(m_log.has_scope(0, "getDeviceInfo"));
    EXPECT_EQ(m_log.count(0, "slotID : 7"), 1);
}

TEST_F(Devices, EveryIdentifierIsInSlotZero) {
    for (const int number : {0, 1, 99}) {
        const basestationID id{NPPlatform_PXI, number};
        int slot = 42;
        EXPECT_TRUE(tryGetSlotID(&id, &slot));
        EXPECT_EQ(slot, 0);
    }
    EXPECT_TRUE(tryGetSlotID(nullptr, nullptr));
    EXPECT_TRUE(m_log.has_scope(1, "tryGetSlotID"));
    EXPECT_EQ(m_log.count(1, "0"), 4);
}

// What making a back-end with its modules prints.
const std::string back_end_made = "A_ORBE_Controller ctor\n"
                                  "SPI_Module ctor at base adr : 500\n"
                                  "GPIO_Module ctor at base adr : 200\n"
                                  "GPIO_Module ctor at base adr : 0\n"
                                  "GPIO_Module ctor at base adr : 8\n"
                                  "UART_Module ctor at base adr : 400\n"
                                  "XADC_Module ctor at base adr : 800\n"
                                  "Okelly_Adapter_Module ctor at base adr : 1000\n"
                                  "AXI_Stream_Fifo_Module ctor at base adr : 1200\n"
                                  "HW_ICAP_Module ctor at base adr : 1400\n"
                                  "Foreign HW_ICAP_Module ctor at base adr : 400\n"
                                  "GPIO_Module ctor at base adr : 1600\n";

std::string four_times(const std::string& text) {
    return text + text + text + text;
}

class Opening : public API_Fixture {};

TEST_F(Opening, RecordingsNameIsTakenWithoutWhatNobodySees) {
    const std::string path = write_recording_without_rows(mebibyte);
    for (const std::string& line : {path + " ", path + "\t\r", "\xEF\xBB\xBF" + path}) {
        select_simulation(line);
        EXPECT_EQ(openBS(0), SUCCESS) << line;
    }
}

TEST_F(Opening, SwitchFileSelectsSimulation) {
    open_simulation();
    ASSERT_TRUE(current_controller());
    EXPECT_TRUE(current_controller()->is_in_simulation_mode());
    EXPECT_EQ(content_of("ORBE_DFGMZ_ADAPTER_SI"), "Test");
    EXPECT_TRUE(m_log.has_scope(0, "openBS"));
    EXPECT_EQ(m_log.count(0, "slotID : 0"), 1);
    EXPECT_EQ(m_log.count(0, "ORBE_Controller_Library ctor. (Simulation mode)"), 1);
    EXPECT_EQ(m_log.count(0, "Converter data structures prepared (0)"), 1);
    EXPECT_EQ(m_log.count("Warning re initalizing library. slotID : 0"), 0);
}

TEST_F(Opening, ReportsTheRecordingOnStandardOutput) {
    const std::string path = write_recording_without_rows(mebibyte);
    select_simulation(path);
    testing::internal::CaptureStdout();
    EXPECT_EQ(openBS(3), SUCCESS);
    const std::string printed = testing::internal::GetCapturedStdout();
    // The switch file is read twice: for the mode, and for the recording's name once the box is up.
    EXPECT_EQ(printed, "ORBE_DFGMZ_ADAPTER_SIM file present in working directory\n" + back_end_made +
                           "UART_Module ctor at base adr : 0\n" +
                           four_times("NP_Probe_Config_Module ctor\n") +
                           four_times("L2_CH_Results_NP_PXI_Format_Converter ctor\nsizeof(m_ep)) : 10056\n") +
                           "MT_RHD_PXI_Queue ctor \n"
                           "RHD_to_PXI_ADC_Format_Converter ctor\n"
                           "ORBE_DFGMZ_ADAPTER_SIM file present in working directory\n"
                           "Sim file opened : " +
                           path + "\n" + four_times("reset_and_resync_counters requested.\n") +
                           "Simulation worker thread started\n");
}

TEST_F(Opening, OpeningAgainWarnsAndReplacesControllerAndConverters) {
    open_simulation();
    const auto controller = std::weak_ptr(current_controller());
    const auto np_converter = current_np_converter(1);
    const auto rhd_converter = current_rhd_converter();
    np_converter->queue().push({});
    EXPECT_EQ(openBS(5), SUCCESS);
    EXPECT_EQ(m_log.count(0, "Warning re initalizing library. slotID : 5"), 1);
    EXPECT_EQ(m_log.count("ORBE_Controller_Library dtor"), 1);
    EXPECT_TRUE(controller.expired());
    EXPECT_NE(current_np_converter(1), np_converter);
    EXPECT_NE(current_rhd_converter(), rhd_converter);
    EXPECT_EQ(current_np_converter(1)->queue().size(), 0U) << "queued packets are lost";
}

TEST_F(Opening, OpeningAgainWhileThePumpRunsEndsThePumpAndWakesReaders) {
    open_simulation();
    EXPECT_EQ(start_acquisition(0, 1), SUCCESS);
    std::atomic<int> amount{-1};
    std::thread reader([&] {
        electrodePacket packet;
        int actual = -1;
        readElectrodeData(0, 2, 0, &packet, &actual, 1);
        amount = actual;
    });
    EXPECT_EQ(openBS(0), SUCCESS);
    reader.join();
    EXPECT_EQ(amount, 0);
    EXPECT_EQ(m_log.count("End of main pump thread (0,1)"), 1);
    EXPECT_FALSE(g_acquisition_running);
    EXPECT_EQ(start_acquisition(0, 1), SUCCESS);
    EXPECT_TRUE(*g_pump_thread);
}

TEST_F(Opening, RecordingOfTheNameThatOpeningMakesIsPlayedAndLeftAlone) {
    const std::string content(mebibyte, 'r');
    std::ofstream("raw_data.bin", std::ios::binary) << content;
    select_simulation("raw_data.bin");
    EXPECT_EQ(openBS(0), SUCCESS);
    EXPECT_TRUE(current_controller()->pump_data_to_demux()) << "there is a whole transfer to play";
    EXPECT_FALSE(current_controller()->pump_data_to_demux());
    EXPECT_EQ(closeBS(0), SUCCESS);
    EXPECT_EQ(content_of("raw_data.bin"), content);
}

TEST_F(Opening, AnotherFileOfThatNameIsKeptUnderItsDate) {
    std::ofstream("raw_data.bin", std::ios::binary) << "a day's work";
    open_simulation(mebibyte);
    EXPECT_EQ(content_of("raw_data.bin"), "");
    std::string kept;
    for (const auto& entry : std::filesystem::directory_iterator(".")) {
        const std::string name = entry.path().filename().string();
        kept = name.starts_with("raw_data_") ? name : kept;
    }
    EXPECT_EQ(content_of(kept.c_str()), "a day's work");
    EXPECT_EQ(m_log.count(-1, "raw_data.bin was not empty and is kept as " + kept), 1);
}

class Bad_Recording : public API_Fixture {
protected:
    // Opens the recording and expects it to be refused with the one message that names it.
    static void expect_refused(const std::string& path) {
        select_simulation(path);
        testing::internal::CaptureStdout();
        EXPECT_EQ(openBS(0), 5);
        const std::string printed = testing::internal::GetCapturedStdout();
        EXPECT_NE(printed.find("Sim file open error : " + path), std::string::npos) << printed;
        EXPECT_TRUE(current_controller()) << "the half-made controller stays";
    }
};

TEST_F(Bad_Recording, MissingFileIsRefused) {
    expect_refused("/nowhere/at/all.bin");
}

TEST_F(Bad_Recording, EmptyNameIsRefused) {
    expect_refused("");
}

TEST_F(Bad_Recording, DirectoryIsRefused) {
    std::filesystem::create_directory("a_directory");
    expect_refused(std::filesystem::absolute("a_directory").string());
}

#if defined(__linux__)
TEST_F(Bad_Recording, UnreadableFileIsRefused) {
    const std::string path = write_recording_without_rows(mebibyte);
    ASSERT_EQ(chmod(path.c_str(), 0), 0);
    // The superuser reads everything, so the test gives that up for a while.
    const bool superuser = geteuid() == 0;
    if (superuser) {
        ASSERT_EQ(chmod(".", 0777), 0);
        ASSERT_EQ(seteuid(65534), 0);
    }
    expect_refused(path);
    if (superuser) {
        ASSERT_EQ(seteuid(0), 0);
    }
}
#endif

TEST_F(Bad_Recording, OpensAgainAfterARefusal) {
    expect_refused("/nowhere/at/all.bin");
    open_simulation();
    EXPECT_EQ(m_log.count("Warning re initalizing library. slotID : 0"), 1);
}

TEST_F(Bad_Recording, FileShorterThanATransferEndsThePumpAtOnce) {
    for (const std::size_t size : {std::size_t{0}, std::size_t{1}, mebibyte - 1}) {
        m_log.clear();
        open_simulation(size);
        EXPECT_EQ(start_acquisition(0, 1), SUCCESS);
        wait_for_log("error in main pump thread (0,1)");
        EXPECT_EQ(closeBS(0), SUCCESS);
    }
}

TEST_F(Bad_Recording, GarbageIsDiscardedAndClosesCleanly) {
    std::string garbage(3 * mebibyte, '\0');
    unsigned state = 12345;
    for (char& byte : garbage) {
        state = state * 1664525U + 1013904223U;
        byte = static_cast<char>(state >> 24U);
    }
    std::ofstream("garbage.bin", std::ios::binary) << garbage;
    select_simulation("garbage.bin");
    EXPECT_EQ(openBS(0), SUCCESS);
    EXPECT_EQ(start_acquisition(0, 1), SUCCESS);
    wait_for_log("error in main pump thread (0,1)");
    EXPECT_EQ(closeBS(0), SUCCESS);
    EXPECT_EQ(m_log.count("Joining with NP workers"), 1);
}

TEST_F(Opening, WithoutABoxHardwareModeIsRefused) {
#if defined(__linux__)
    // Other devices than those of the machine that tests.
    std::filesystem::create_directory("no_devices");
    *g_controller_factory = [](bool simulation) {
        return std::make_shared<ORBE_Controller_Library>(std::make_shared<Folder_Controller>("no_devices"),
                                                         simulation);
    };
#endif
    testing::internal::CaptureStdout();
    EXPECT_EQ(openBS(0), 5);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "ORBE_DFGMZ_ADAPTER_SIM not present in working directory\n" + back_end_made +
                  "Devices found: 0\n");
    *g_controller_factory = {};
    EXPECT_EQ(m_log.count(0, "ORBE_Controller_Library ctor. (HW mode)"), 1);
    EXPECT_EQ(m_log.count(-2, "Open driver failed"), 1);
}

TEST_F(Opening, RuntimeErrorFromBelowIsLoggedAndAnsweredAsFive) {
    *g_controller_factory = [](bool) -> std::shared_ptr<Pelgar::ORBE::ORBE_Controller_Library> {
        throw std::runtime_error("map bar ioctl failed!");
    };
    EXPECT_EQ(openBS(0), 5);
    EXPECT_EQ(m_log.count(-2, "openBS : map bar ioctl failed!"), 1);
    *g_controller_factory = {};
}

class Closing : public API_Fixture {};

TEST_F(Closing, WithoutAnOpenBasestationItReturnsZero) {
    EXPECT_EQ(closeBS(9), SUCCESS);
    EXPECT_TRUE(m_log.has_scope(0, "closeBS"));
    EXPECT_EQ(m_log.count(0, "SlotID : 9"), 1);
}

TEST_F(Closing, DestroysTheControllerAndKeepsTheConverters) {
    open_simulation();
    const auto controller = std::weak_ptr(current_controller());
    const auto converter = current_np_converter(4);
    EXPECT_EQ(closeBS(0), SUCCESS);
    EXPECT_TRUE(controller.expired());
    EXPECT_FALSE(current_controller());
    EXPECT_EQ((*g_np_converters)[3], converter);
    EXPECT_TRUE(converter->queue().signalled_for_exit());
    EXPECT_TRUE((*g_rhd_converter)->queue().signalled_for_exit());
    EXPECT_TRUE(g_stop_requested);
}

TEST_F(Closing, EndsAndJoinsARunningPump) {
    open_simulation();
    EXPECT_EQ(start_acquisition(2, 3), SUCCESS);
    testing::internal::CaptureStdout();
    EXPECT_EQ(closeBS(2), SUCCESS);
    EXPECT_NE(testing::internal::GetCapturedStdout().find("pause streaming (simulation)\n"),
              std::string::npos);
    EXPECT_FALSE(*g_pump_thread);
    EXPECT_EQ(m_log.count(0, "End of main pump thread (2,3)"), 1);
}

TEST_F(Closing, DisablesTheStreamsBeforeItStopsThePumpAndTurnsReadersAway) {
    open_simulation();
    EXPECT_EQ(start_acquisition(2, 3), SUCCESS);
    bool stopping = true;
    bool turned_away = true;
    const On_Log_Line watch("{ disable_streaming", [&] {
        stopping = g_stop_requested;
        turned_away = current_rhd_converter()->queue().signalled_for_exit();
        for (int port = 1; port <= 4; ++port) {
            turned_away = turned_away || current_np_converter(port)->queue().signalled_for_exit();
        }
    });
    EXPECT_EQ(closeBS(2), SUCCESS);
    EXPECT_EQ(watch.times(), 1);
    EXPECT_FALSE(stopping);
    EXPECT_FALSE(turned_away);
}

TEST_F(Closing, StreamsAgainAfterReopening) {
    open_simulation();
    for (int round = 0; round < 3; ++round) {
        EXPECT_EQ(start_acquisition(0, 1), SUCCESS);
        EXPECT_TRUE(*g_pump_thread) << "round " << round;
        EXPECT_EQ(closeBS(0), SUCCESS);
        EXPECT_EQ(openBS(0), SUCCESS);
    }
    EXPECT_EQ(m_log.count("End of main pump thread (0,1)"), 3);
}

class Head_Stages : public API_Fixture {
protected:
    static bool detected(int port) {
        bool present = port % 2 == 0;
        EXPECT_EQ(detectHeadStage(0, port, &present), SUCCESS);
        return present;
    }
};

TEST_F(Head_Stages, SimulationHasOneOnTheFirstPort) {
    open_simulation();
    EXPECT_TRUE(detected(1));
    EXPECT_FALSE(detected(2));
    EXPECT_FALSE(detected(3));
    EXPECT_FALSE(detected(4));
    EXPECT_TRUE(m_log.has_scope(0, "detectHeadStage"));
    EXPECT_EQ(m_log.count(0, "slotID : 0, portID : 3"), 1);
}

TEST_F(Head_Stages, PortsThatDoNotExistHaveNone) {
    open_simulation();
    for (const int port : {0, 5, -1, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
        EXPECT_FALSE(detected(port));
    }
    EXPECT_EQ(detectHeadStage(0, 1, nullptr), SUCCESS);
}

TEST_F(Head_Stages, WithoutAnOpenBasestationTheCallFails) {
    bool present = true;
    EXPECT_EQ(detectHeadStage(0, 1, &present), FAILED);
    EXPECT_FALSE(present);
    EXPECT_EQ(m_log.count(-2, "detectHeadStage : no basestation is open"), 1);
}

TEST_F(Devices, ArmIsLoggedAndDoesNothing) {
    EXPECT_EQ(arm(4), SUCCESS);
    EXPECT_TRUE(m_log.has_scope(0, "arm"));
    EXPECT_EQ(m_log.count(0, "slotID : 4"), 1);
}

} // namespace
