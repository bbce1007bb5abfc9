// Runs orbe-box on a modelled box, as a user runs it but within the test's process.
#include "Box_Program.h"

#include "Self_Test_Recordings.h"
#include "Virtual_Box_Controller.h"
#include "Waiter_Guard.h"
#include "generator/Recording_Generator.h"

#include <gtest/gtest.h>
#include <loguru.hpp>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <future>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#if !defined(_WIN32)
#include <unistd.h>
#endif

namespace {

using namespace Pelgar::ORBE;
using namespace Pelgar::ORBE::test;
using Headstage = Virtual_Headstage;

struct Run_Result {
    int exit_code = -1;
    std::string output;
    std::string errors;
};

class Box_Program : public testing::Test {
protected:
    Run_Result run(const std::vector<const char*>& arguments, const std::string& answers = "") {
        std::istringstream answer_stream(answers);
        const tools::Box_Environment environment{
            [this](bool simulation) {
                return simulation ? std::make_unique<ORBE_Controller_Library>(true)
                                  : std::make_unique<ORBE_Controller_Library>(
                                        std::make_shared<Virtual_Box_Controller>(m_box), false);
            },
            answer_stream, m_self_test_limit};
        std::vector<const char*> all{"orbe-box"};
        all.insert(all.end(), arguments.begin(), arguments.end());
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        Run_Result result;
        result.exit_code = tools::run_box_program(static_cast<int>(all.size()), all.data(), environment);
        result.errors = testing::internal::GetCapturedStderr();
        result.output = testing::internal::GetCapturedStdout();
        return result;
    }

    // The errors without the line that names the directory in which the library ran, which must exist.
    static std::string without_directory(const std::string& errors) {
        const std::string start = "orbe-box: the library's log and what it printed are in '";
        const std::size_t at = errors.find(start);
        if (at == std::string::npos) {
            return errors;
        }
        const std::size_t name = at + start.size();
        const std::size_t end = errors.find("'\n", name);
        const std::filesystem::path directory = errors.substr(name, end - name);
        EXPECT_TRUE(std::filesystem::exists(directory / "ORBE.log"));
        std::filesystem::remove_all(directory);
        return errors.substr(0, at) + errors.substr(end + 2);
    }

    static void make_file(const char* name, std::size_t size) {
        std::ofstream file(name, std::ios::binary);
        for (std::size_t i = 0; i < size; ++i) {
            file.put(static_cast<char>(i * 7 % 251));
        }
    }

    static std::vector<std::uint8_t> content_of(const char* name) {
        std::ifstream file(name, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    }

    std::chrono::milliseconds m_self_test_limit = std::chrono::hours(1);
    Waiter_Guard m_waiter;
    std::shared_ptr<Virtual_Box> m_box = std::make_shared<Virtual_Box>();
};

TEST_F(Box_Program, InfoShowsTheBoxAndWhatHangsOnItsPorts) {
    m_box->set_register(Virtual_Box::build_timestamp, 0x4130'0000);
    m_box->set_register(Virtual_Box::temperature, 0x9C40);
    m_box->set_register(Virtual_Box::efuse, 0xCAFE'0001);
    m_box->lock_at_look(2, std::nullopt);
    m_box->headstage(3).set_text(Headstage::probe_eeprom, 40, "PRB_OTHER");
    const Run_Result result = run({"info"});
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(result.output,
              "Design       4e500040, built 08-02-2024\n"
              "Temperature  34.5 degrees Celsius\n"
              "Efuse        cafe0001\n"
              "Ports        4\n"
              "  1  locked  headstage NP2_HS_30  probe PRB_1_4_0480_1  serial number 1234605616436508552\n"
              "  2  locked  headstage NP2_HS_30  probe PRB_1_4_0480_1  serial number 1234605616436508552\n"
              "  3  not locked\n"
              "  4  locked  headstage NP2_HS_30  probe PRB_OTHER  serial number 1234605616436508552\n");
    EXPECT_EQ(result.exit_code, 0);
}

TEST_F(Box_Program, InfoTellsOfAHeadstageThatDoesNotAnswer) {
    m_box->lock_at_look(2, std::nullopt);
    m_box->lock_at_look(3, std::nullopt);
    m_box->headstage(1).fail_from(1, Link_Fault::silence);
    const Run_Result result = run({"info"});
    EXPECT_EQ(result.exit_code, 1);
    EXPECT_NE(result.output.find("  1  locked  headstage NP2_HS_30"), std::string::npos);
    EXPECT_NE(
        result.output.find("  2  locked  does not answer: Exception caught while probe probe_init_part_1 : "
                           "UART_Module recv timeout\n"),
        std::string::npos)
        << result.output;
    EXPECT_EQ(without_directory(result.errors), "");
}

TEST_F(Box_Program, InfoShowsTheDesignEvenWhenNoHeadstageLocks) {
    for (std::size_t port = 0; port < 4; ++port) {
        m_box->lock_at_look(port, std::nullopt);
    }
    const Run_Result result = run({"info"});
    EXPECT_EQ(result.exit_code, 1);
    EXPECT_TRUE(result.output.starts_with("Design       4e500040, built "));
    EXPECT_EQ(result.output.find("Ports"), std::string::npos);
    EXPECT_EQ(without_directory(result.errors), "orbe-box: no headstage's link locks\n");
}

TEST_F(Box_Program, InfoLeavesAnotherDesignRunning) {
    m_box->set_register(Virtual_Box::signature, 0x5248'0000);
    const Run_Result result = run({"info"});
    EXPECT_EQ(result.exit_code, 1);
    EXPECT_TRUE(result.output.starts_with("Design       52480000, built ")) << result.output;
    EXPECT_TRUE(result.output.ends_with("Ports        none: this design serves no probes\n"));
    EXPECT_TRUE(m_box->boots().empty());
    EXPECT_EQ(without_directory(result.errors), "");
}

TEST_F(Box_Program, SelfTestsSwitchToTheDesignThatServesProbes) {
    m_box->set_register(Virtual_Box::signature, 0x5248'0000);
    m_box->put_design_into_flash(Virtual_Box::neuropixels_flash_address, Virtual_Box::neuropixels_signature);
    const Run_Result result = run({"selftest", "1"});
    EXPECT_EQ(result.exit_code, 0) << result.errors;
    EXPECT_EQ(m_box->boots(), std::vector<std::uint32_t>{Virtual_Box::neuropixels_flash_address});
}

TEST_F(Box_Program, SaysWhyThereIsNoBox) {
    m_box->queue_open_results({Virtual_Box::Open_Result::no_box});
    const Run_Result result = run({"info"});
    EXPECT_EQ(result.exit_code, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(without_directory(result.errors), "orbe-box: no box is connected: Open driver failed\n");
}

TEST_F(Box_Program, ABoxThatCannotBeMappedIsAFailureToo) {
    m_box->queue_open_results({Virtual_Box::Open_Result::mapping_fails});
    const Run_Result result = run({"hwinfo"});
    EXPECT_EQ(result.exit_code, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(without_directory(result.errors), "orbe-box: map bar ioctl failed!\n");
}

TEST_F(Box_Program, RunsOnTheSimulatedBox) {
    const Run_Result result = run({"--simulation", "info"});
    EXPECT_EQ(result.exit_code, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_TRUE(
        result.output.ends_with("Temperature  none, takes a box\n"
                                "Efuse        000000c3\n"
                                "Ports        2\n"
                                "  1  locked  headstage NP2_HS_30  probe PRB_1_4_0480_1  serial number 0\n"
                                "  2  not locked\n"
                                "  3  not offered by the design\n"
                                "  4  not offered by the design\n"))
        << result.output;
}

TEST_F(Box_Program, AGoodProbePassesEverySelfTest) {
    const Run_Result result = run({"selftest", "3"});
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(result.output, "Self tests of port 3\n"
                             "  Start   box, headstage and probe come up         ready\n"
                             "  HB      link to the headstage                    pass\n"
                             "  PRBS    pseudo-random bits over the link         pass\n"
                             "  I2CMM   registers of the probe                   pass\n"
                             "  EEPROM  EEPROMs of headstage and probe           pass\n"
                             "  SR      shift registers of the probe             pass\n"
                             "  PSB     test pattern over the probe serial bus   pass\n"
                             "  Signal  test tone through every channel          pass\n"
                             "7 of 7 passed\n");
    EXPECT_EQ(result.exit_code, 0);
}

TEST_F(Box_Program, ASelfTestThatFailsSaysWhy) {
    m_box->headstage(0).flicker(Headstage::headstage_eeprom, 3);
    const Run_Result result = run({"selftest", "1"});
    EXPECT_EQ(result.exit_code, 1);
    EXPECT_NE(result.output.find(
                  "  EEPROM  EEPROMs of headstage and probe           FAIL  an EEPROM does not read the same "
                  "twice (eeprom at adres : a4 does not read the same twice)\n"),
              std::string::npos)
        << result.output;
    EXPECT_TRUE(result.output.ends_with("6 of 7 passed\n"));
    EXPECT_EQ(without_directory(result.errors), "");
}

#if !defined(_WIN32)

// What a line tells of is shown before it is done. The death of the program keeps what has gone through.
TEST_F(Box_Program, ASelfTestThatDoesNotComeBackEndsTheProgram) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    m_self_test_limit = std::chrono::seconds(2);
    const auto hang = [this] {
        // The first wait of a second is that of the bit errors.
        m_waiter.on_wait([this](std::size_t number) {
            if (m_waiter.waits().at(number - 1) == std::chrono::seconds(1)) {
                std::promise<void> never;
                never.get_future().wait();
            }
        });
        std::istringstream answers;
        const tools::Box_Environment environment{[this](bool /*simulation*/) {
                                                     return std::make_unique<ORBE_Controller_Library>(
                                                         std::make_shared<Virtual_Box_Controller>(m_box),
                                                         false);
                                                 },
                                                 answers, m_self_test_limit};
        const char* const arguments[] = {"orbe-box", "selftest", "1"};
        std::fflush(stdout);
        dup2(STDERR_FILENO, STDOUT_FILENO);
        tools::run_box_program(3, arguments, environment);
    };
    EXPECT_EXIT(hang(), testing::ExitedWithCode(1),
                "  HB      link to the headstage                    pass\n"
                "  PRBS    pseudo-random bits over the link         FAIL  no answer within 2 seconds\n"
                "orbe-box: the box does not come back; the library's log and what it printed are in '");
}

#endif

TEST_F(Box_Program, SelfTestsOfAProbeThatDoesNotAnswerAreNotBegun) {
    m_box->headstage(1).fail_from(1, Link_Fault::silence);
    const Run_Result result = run({"selftest", "2"});
    EXPECT_EQ(result.exit_code, 1);
    EXPECT_EQ(result.output, "Self tests of port 2\n"
                             "  Start   box, headstage and probe come up         FAIL\n");
    EXPECT_EQ(without_directory(result.errors),
              "orbe-box: the probe does not come up: Exception caught while probe probe_init_part_1 : "
              "UART_Module recv timeout\n");
}

TEST_F(Box_Program, TheSimulatedBoxTakesItsSelfTestsFromRecordings) {
    std::filesystem::create_directory("recordings");
    write_recording("recordings/muxed_raw_data_psb_test.bin", pattern_recording(0));
    write_recording("recordings/muxed_np_raw_data_2_minute.bin", tone_recording(0, 40, 1));
    const Run_Result result = run({"--simulation", "--recordings", "recordings", "selftest", "1"});
    EXPECT_EQ(result.output, "Self tests of port 1\n"
                             "  Start   box, headstage and probe come up         ready\n"
                             "  HB      link to the headstage                    skipped, takes a box\n"
                             "  PRBS    pseudo-random bits over the link         skipped, takes a box\n"
                             "  I2CMM   registers of the probe                   skipped, takes a box\n"
                             "  EEPROM  EEPROMs of headstage and probe           skipped, takes a box\n"
                             "  SR      shift registers of the probe             pass\n"
                             "  PSB     test pattern over the probe serial bus   pass\n"
                             "  Signal  test tone through every channel          pass\n"
                             "3 of 3 passed\n");
    EXPECT_EQ(result.exit_code, 0);
    EXPECT_EQ(result.errors, "");
}

TEST_F(Box_Program, ADataPathThatFailsSaysWhatWasSeen) {
    std::filesystem::create_directory("recordings");
    write_recording("recordings/muxed_raw_data_psb_test.bin", tone_recording(0, 40, 1));
    write_recording("recordings/muxed_np_raw_data_2_minute.bin", tone_recording(0, 38, 1));
    const Run_Result result = run({"--simulation", "--recordings", "recordings", "selftest", "1"});
    EXPECT_TRUE(result.output.ends_with(
        "  PSB     test pattern over the probe serial bus   FAIL  the test pattern does not arrive (PSB test "
        "ch_data compare failed at : 0)\n"
        "  Signal  test tone through every channel          FAIL  a channel does not carry the tone of 1150 "
        "to "
        "1300 Hz (Frq check failed)\n"
        "1 of 3 passed\n"))
        << result.output;
    EXPECT_EQ(result.exit_code, 1);
    EXPECT_EQ(without_directory(result.errors), "");
}

TEST_F(Box_Program, WithoutItsRecordingsTheSimulatedBoxSaysWhichAreMissing) {
    std::filesystem::create_directory("recordings");
    const Run_Result result = run({"--simulation", "--recordings", "recordings", "selftest", "1"});
    EXPECT_NE(result.output.find(
                  "FAIL  the test pattern does not arrive (Recording cannot be opened, No such file or "
                  "directory: "),
              std::string::npos)
        << result.output;
    EXPECT_NE(result.output.find("recordings/muxed_raw_data_psb_test.bin)\n"), std::string::npos)
        << result.output;
    EXPECT_NE(result.output.find("recordings/muxed_np_raw_data_2_minute.bin)\n"), std::string::npos)
        << result.output;
    EXPECT_EQ(result.exit_code, 1);
    EXPECT_EQ(without_directory(result.errors), "");
}

TEST_F(Box_Program, FlashWritesTheFileOnceTheUserAgrees) {
    make_file("design.bin", 70'000);
    const Run_Result result = run({"flash", "design.bin", "0x100000"}, "yes\n");
    EXPECT_EQ(result.errors, "Erase 2 sectors of 64 KiB from 0x100000 on and write 70000 bytes?\n"
                             "A box whose design is damaged does not start any more. [yes/no] ");
    EXPECT_EQ(result.output, "70000 bytes written at 0x100000.\n");
    EXPECT_EQ(result.exit_code, 0);
    EXPECT_EQ(m_box->flash().bytes(0x10'0000, 70'000), content_of("design.bin"));
}

TEST_F(Box_Program, FlashCountsInWords) {
    make_file("design.bin", 1);
    const Run_Result result = run({"flash", "design.bin", "0"}, "yes\n");
    EXPECT_TRUE(result.errors.starts_with("Erase 1 sector of 64 KiB from 0x000000 on and write 1 byte?\n"));
    EXPECT_EQ(result.output, "1 byte written at 0x000000.\n");
}

TEST_F(Box_Program, FlashWritesTheLastBytesOfAFileThatIsNoMultipleOfSixteen) {
    make_file("design.bin", 257);
    m_box->flash().put(0x2'0000, std::vector<std::uint8_t>(300, 0x00));
    const Run_Result result = run({"flash", "--yes", "design.bin", "131072"});
    EXPECT_EQ(result.output, "257 bytes written at 0x020000.\n");
    EXPECT_EQ(result.exit_code, 0);
    EXPECT_EQ(m_box->flash().byte_at(0x2'0100), content_of("design.bin").at(256));
    EXPECT_EQ(m_box->flash().bytes(0x2'0000, 257), content_of("design.bin"));
    EXPECT_EQ(m_box->flash().bytes(0x2'0000 + 257, 43), std::vector<std::uint8_t>(43, 0xFF));
}

TEST_F(Box_Program, FlashTakesAFileThatNobodyMayWrite) {
    make_file("design.bin", 17);
    std::filesystem::permissions("design.bin", std::filesystem::perms::owner_read);
    const Run_Result result = run({"flash", "--yes", "design.bin", "0"});
    std::filesystem::permissions("design.bin", std::filesystem::perms::owner_all);
    EXPECT_EQ(result.exit_code, 0) << result.errors;
    EXPECT_EQ(m_box->flash().bytes(0, 17), content_of("design.bin"));
}

// Stopping in the middle would leave a box that does not start any more.
TEST_F(Box_Program, WritingIsNotStoppedByTheUser) {
    make_file("design.bin", 70'000);
    m_waiter.on_wait([](std::size_t /*number*/) { std::raise(SIGINT); });
    EXPECT_EQ(run({"flash", "--yes", "design.bin", "0"}).exit_code, 0);
    EXPECT_EQ(m_box->flash().bytes(0, 70'000), content_of("design.bin"));
    const std::string record(64, 'a');
    EXPECT_EQ(run({"hwinfo", "--yes", "--write", record.c_str()}).exit_code, 0);
    EXPECT_EQ(m_box->flash().byte_at(0xFF'0000), 0xAA);
    EXPECT_GE(m_waiter.waits().size(), 4U) << "the signals came while the flash was busy";
}

TEST_F(Box_Program, FlashDoesNothingWithoutConsent) {
    make_file("design.bin", 16);
    for (const char* answer : {"no\n", "y\n", "YES\n", "\n", ""}) {
        const Run_Result result = run({"flash", "design.bin", "0x100000"}, answer);
        EXPECT_EQ(result.exit_code, 1) << answer;
        EXPECT_EQ(result.output, "Nothing was written.\n");
        EXPECT_TRUE(without_directory(result.errors).ends_with("any more. [yes/no] "));
    }
    EXPECT_EQ(m_box->flash().transactions().size(), 0U);
}

TEST_F(Box_Program, FlashRefusesWhatIsNoImageOrDoesNotFit) {
    make_file("empty.bin", 0);
    make_file("small.bin", 16);
    make_file("long.bin", 65'537);

    struct Refusal {
        std::vector<const char*> arguments;
        const char* message;
    };

    const std::vector<Refusal> refusals{
        {{"flash", "missing.bin", "0"}, "cannot read 'missing.bin': No such file or directory"},
        {{"flash", ".", "0"}, "'.' is no file"},
        {{"flash", "empty.bin", "0"}, "'empty.bin' is empty"},
        {{"flash", "small.bin", "0x8000"},
         "ADDRESS is not the beginning of a sector (a multiple of 0x10000)"},
        {{"flash", "small.bin", "0xff0000"},
         "'small.bin' does not fit between ADDRESS and the hardware record"},
        {{"flash", "small.bin", "0x1000000"},
         "'small.bin' does not fit between ADDRESS and the hardware record"},
        {{"flash", "long.bin", "0xfe0000"},
         "'long.bin' does not fit between ADDRESS and the hardware record"}};
    for (const Refusal& refusal : refusals) {
        const Run_Result result = run(refusal.arguments, "yes\n");
        EXPECT_EQ(result.exit_code, 2);
        EXPECT_EQ(result.errors, std::string("orbe-box: ") + refusal.message + "\n");
    }
    EXPECT_EQ(m_box->opens(), 0U);
}

TEST_F(Box_Program, FlashSaysWhyItFailed) {
    make_file("design.bin", 16);
    m_box->flash().let_busy_stick();
    const Run_Result result = run({"flash", "--yes", "design.bin", "0"});
    EXPECT_EQ(result.exit_code, 1);
    EXPECT_EQ(without_directory(result.errors),
              "orbe-box: the flash was not written: Exception catched during program_flash command : "
              "Flash erase/program timeout\n");
}

TEST_F(Box_Program, HardwareInfoShowsTheRecord) {
    std::vector<std::uint8_t> record(32, 0xFF);
    record[0] = 0x01;
    record[17] = 'A';
    m_box->flash().put(0xFF'0000, record);
    const Run_Result result = run({"hwinfo"});
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(result.output, "00  01 ff ff ff ff ff ff ff ff ff ff ff ff ff ff ff  ................\n"
                             "10  ff 41 ff ff ff ff ff ff ff ff ff ff ff ff ff ff  .A..............\n");
    EXPECT_EQ(result.exit_code, 0);
}

TEST_F(Box_Program, HardwareInfoIsWrittenOnceTheUserAgrees) {
    const std::string record = "000102030405060708090a0b0c0d0e0f101112131415161718191A1B1C1D1E1F";
    EXPECT_EQ(run({"hwinfo", "--write", record.c_str()}, "no\n").exit_code, 1);
    EXPECT_EQ(m_box->flash().byte_at(0xFF'0001), 0xFF);
    const Run_Result result = run({"hwinfo", "--write", record.c_str()}, "yes\n");
    EXPECT_EQ(result.exit_code, 0);
    EXPECT_TRUE(result.output.ends_with("The record is written.\n"));
    EXPECT_EQ(result.errors, "Write the new record over it? [yes/no] ");
    for (std::uint32_t i = 0; i < 32; ++i) {
        EXPECT_EQ(m_box->flash().byte_at(0xFF'0000 + i), i);
    }
}

TEST_F(Box_Program, ARecordMustBeWhole) {
    for (const char* record :
         {"", "00", "zz0102030405060708090a0b0c0d0e0f101112131415161718191a1b1c1d1e1f"}) {
        const Run_Result result = run({"hwinfo", "--write", record});
        EXPECT_EQ(result.exit_code, 2);
        EXPECT_EQ(result.errors, "orbe-box: the record is 32 bytes: 64 hexadecimal digits\n");
    }
    EXPECT_EQ(m_box->opens(), 0U);
}

TEST_F(Box_Program, WrongArgumentsAnswerTwo) {
    EXPECT_EQ(run({}).exit_code, 2);
    EXPECT_EQ(run({"selftest"}).exit_code, 2);
    EXPECT_EQ(run({"selftest", "0"}).exit_code, 2);
    EXPECT_EQ(run({"selftest", "5"}).exit_code, 2);
    EXPECT_EQ(run({"flash", "x.bin"}).exit_code, 2);
    for (const char* address : {"here", "-65536", "0x100000000", "18446744073709551616", "nan", ""}) {
        EXPECT_EQ(run({"flash", "x.bin", address}).exit_code, 2) << address;
    }
    EXPECT_EQ(run({"--recordings", "missing", "info"}).exit_code, 2);
    EXPECT_EQ(run({"--help"}).exit_code, 0);
    EXPECT_EQ(m_box->opens(), 0U);
}

TEST_F(Box_Program, TellsItsVersionAndItsExitCodes) {
    EXPECT_EQ(run({"--version"}).output, "orbe-box " ORBE_PROGRAM_VERSION "\n");
    EXPECT_NE(run({"--help"}).output.find("Exit codes: 0 "), std::string::npos);
    for (const char* command : {"info", "selftest", "flash", "hwinfo"}) {
        EXPECT_NE(run({command, "--help"}).output.find("Exit codes: 0 "), std::string::npos) << command;
    }
}

TEST_F(Box_Program, KeepsTheLibrarysLinesOnRequest) {
    const Run_Result result = run({"--keep", "hwinfo"});
    EXPECT_EQ(result.exit_code, 0);
    EXPECT_NE(result.errors, "");
    EXPECT_EQ(without_directory(result.errors), "");
}

} // namespace
