// Results, errors and the API version as texts.
#include "Logged_Call_Fixture.h"
#include "adapter/Last_Error.h"

#include <gtest/gtest.h>
#include <loguru.hpp>

#include <array>
#include <filesystem>
#include <memory>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>

#if defined(__linux__)
#include "Folder_Controller.h"
#endif

namespace {

using namespace Neuropixels;
using Pelgar::ORBE::ORBE_Controller_Library;
#if defined(__linux__)
using Pelgar::ORBE::test::Folder_Controller;
#endif
using Pelgar::ORBE::npoe_adapter::g_controller_factory;
using Pelgar::ORBE::npoe_adapter::keep_last_errors;
using Pelgar::ORBE::test::Logged_Call_Fixture;

class Messages : public Logged_Call_Fixture {
protected:
    static std::string last_error() {
        std::array<char, 2000> text{};
        const size_t length = getLastErrorMessage(text.data(), text.size());
        EXPECT_EQ(length, std::string(text.data()).size());
        return text.data();
    }
};

constexpr size_t api_text_size = 4;

TEST_F(Messages, ApiVersionAsAText) {
    std::array<char, 8> text{};
    text.fill('#');
    EXPECT_EQ(getAPIVersionFull(text.data(), text.size()), 3U);
    EXPECT_EQ(std::string(text.data(), text.size()), std::string("1.0\0####", 8));
    EXPECT_EQ(logged_lines(), scope_with_line("getAPIVersionFull", "getAPIVersionFull"));
}

TEST_F(Messages, ApiVersionIsCutAndItsWholeLengthTold) {
    std::array<char, api_text_size> text{};
    text.fill('#');
    EXPECT_EQ(getAPIVersionFull(text.data(), 2), 3U);
    EXPECT_EQ(std::string(text.data(), text.size()), std::string("1\0##", api_text_size));
    text.fill('#');
    EXPECT_EQ(getAPIVersionFull(text.data(), 0), 3U);
    EXPECT_EQ(getAPIVersionFull(nullptr, 0), 3U);
    EXPECT_EQ(getAPIVersionFull(nullptr, text.size()), 3U);
    EXPECT_EQ(std::string(text.data(), text.size()), "####");
}

TEST_F(Messages, ThereIsNoErrorAtFirst) {
    EXPECT_EQ(last_error(), "");
    EXPECT_EQ(logged_lines(), scope_with_line("getLastErrorMessage", "getLastErrorMessage"));
}

TEST_F(Messages, LastErrorIsKeptWholeOverCallsThatSucceed) {
    EXPECT_EQ(openPort(0, 1), FAILED);
    EXPECT_EQ(last_error(), "openPort : no basestation is open");
    EXPECT_EQ(scanBS(), SUCCESS);
    EXPECT_EQ(last_error(), "openPort : no basestation is open");
    EXPECT_EQ(bistHB(0, 1, 0), FAILED);
    EXPECT_EQ(last_error(), "bistHB : no basestation is open");
}

TEST_F(Messages, LastErrorOfTheFirstOpening) {
    *g_controller_factory = [](bool) -> std::shared_ptr<Pelgar::ORBE::ORBE_Controller_Library> {
        throw std::runtime_error("c2h transfer failed");
    };
    EXPECT_EQ(openBS(0), VERSION_MISMATCH);
    EXPECT_EQ(last_error(), "openBS : c2h transfer failed");
    *g_controller_factory = {};
}

TEST_F(Messages, RecordingThatCannotBeOpenedIsNamedWithTheReason) {
    select_simulation("/nowhere/at/all.bin");
    EXPECT_EQ(openBS(0), VERSION_MISMATCH);
    EXPECT_EQ(last_error(), "Recording cannot be opened, No such file or directory: /nowhere/at/all.bin");
#if defined(__linux__)
    std::filesystem::create_directory("a_directory");
    select_simulation("a_directory");
    EXPECT_EQ(openBS(0), VERSION_MISMATCH);
    EXPECT_EQ(last_error(), "Recording cannot be opened, Is a directory: a_directory");
#endif
}

TEST_F(Messages, RecordingThatIsNamedInQuotesOrNotAtAllIsToldSo) {
    for (const char* const name : {"\"a recording.bin\"", "'a recording.bin'"}) {
        select_simulation(name);
        EXPECT_EQ(openBS(0), VERSION_MISMATCH);
        EXPECT_EQ(last_error(), std::string("openBS : ORBE_DFGMZ_ADAPTER_SIM names its recording in quotes, "
                                            "without which it must stand : ") +
                                    name);
    }
    select_simulation(" ");
    EXPECT_EQ(openBS(0), VERSION_MISMATCH);
    EXPECT_EQ(last_error(), "openBS : ORBE_DFGMZ_ADAPTER_SIM names no recording in its first line");
}

#if defined(__linux__)
TEST_F(Messages, DeviceThatCannotBeOpenedIsNamedWithTheReason) {
    std::filesystem::create_directory("devices");
    std::filesystem::create_symlink("missing", "devices/xdma0_user");
    *g_controller_factory = [](bool simulation) {
        return std::make_shared<ORBE_Controller_Library>(std::make_shared<Folder_Controller>("devices"),
                                                         simulation);
    };
    EXPECT_EQ(openBS(0), VERSION_MISMATCH);
    EXPECT_EQ(last_error(), "No such file or directory: devices/xdma0_user");
    EXPECT_EQ(m_log.count(-2, "Open driver failed"), 1);
    std::filesystem::remove("devices/xdma0_user");
    EXPECT_EQ(openBS(0), VERSION_MISMATCH);
    EXPECT_EQ(last_error(), "no device of the XDMA driver in devices");
    *g_controller_factory = {};
}
#endif

TEST_F(Messages, OnlyErrorsAreKept) {
    keep_last_errors();
    LOG_F(WARNING, "a warning");
    LOG_F(INFO, "a line");
    EXPECT_EQ(last_error(), "");
    LOG_F(ERROR, "an error of %d", 7);
    LOG_F(WARNING, "a warning");
    EXPECT_EQ(last_error(), "an error of 7");
}

TEST_F(Messages, EachThreadHasItsOwnLastError) {
    EXPECT_EQ(openPort(0, 1), FAILED);
    std::string at_first;
    std::string at_last;
    std::thread([&] {
        at_first = last_error();
        EXPECT_EQ(init(0, 1, 0), FAILED);
        at_last = last_error();
    }).join();
    EXPECT_EQ(at_first, "");
    EXPECT_EQ(at_last, "init : no basestation is open");
    EXPECT_EQ(last_error(), "openPort : no basestation is open");
}

TEST_F(Messages, LastErrorIsCutToTheHostsBufferAndItsWholeLengthTold) {
    EXPECT_EQ(openPort(0, 1), FAILED);
    std::array<char, 9> text{};
    EXPECT_EQ(getLastErrorMessage(text.data(), text.size()), 33U);
    EXPECT_STREQ(text.data(), "openPort");
    EXPECT_EQ(getLastErrorMessage(nullptr, 0), 33U);
}

TEST_F(Messages, VeryLongErrorIsCut) {
    keep_last_errors();
    LOG_F(ERROR, "%s", std::string(1023, 'a').c_str());
    EXPECT_EQ(last_error(), std::string(1023, 'a'));
    LOG_F(ERROR, "%s", std::string(1024, 'b').c_str());
    EXPECT_EQ(last_error(), std::string(1023, 'b'));
}

TEST_F(Messages, EveryCodeHasATextOfItsOwn) {
    std::set<std::string> texts;
    int codes = 0;
    const auto take = [&](int code) {
        const std::string text = getErrorMessage(static_cast<NP_ErrorCode>(code));
        EXPECT_NE(text, "");
        EXPECT_NE(text, "unknown error code") << code;
        texts.insert(text);
        ++codes;
    };
    for (int code = SUCCESS; code <= NO_IMU; ++code) {
        if (code != 38) { // is no result
            take(code);
        }
    }
    take(NOTSUPPORTED);
    take(NOTIMPLEMENTED);
    EXPECT_EQ(codes, 59);
    EXPECT_EQ(texts.size(), 59U);
    EXPECT_STREQ(getErrorMessage(SUCCESS), "success");
    EXPECT_STREQ(getErrorMessage(FAILED), "the operation failed");
    EXPECT_STREQ(getErrorMessage(NOTSUPPORTED), "not supported by this box");
}

TEST_F(Messages, OtherNumbersHaveATextToo) {
    for (const int code : {38, 58, 100, 0xFD}) {
        EXPECT_STREQ(getErrorMessage(static_cast<NP_ErrorCode>(code)), "unknown error code") << code;
    }
    m_log.clear();
    getErrorMessage(SUCCESS);
    EXPECT_EQ(logged_lines(), scope_with_line("getErrorMessage", "getErrorMessage"));
}

} // namespace
