// The controller's flash operations on the virtual box: what is in the flash afterwards, what is printed and
// logged, and every way to fail; and the same operations in simulation mode.
#include "Virtual_Box_Controller.h"

#include "Log_Capture.h"
#include "Printed.h"
#include "Waiter_Guard.h"

#include <controller/C_ORBE_Controller_Library.h>
#include <loguru.hpp>

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <memory>
#include <numeric>
#include <string>
#include <tuple>
#include <vector>

namespace {

using namespace Pelgar::ORBE;
using namespace Pelgar::ORBE::test;
using namespace std::chrono_literals;
using Bytes = std::vector<std::uint8_t>;
using Transaction = SPI_Flash_Model::Transaction;

constexpr std::uint32_t image_address = 0xB0'0000;
constexpr std::uint32_t sector_size = SPI_Flash_Model::sector_size;
constexpr std::uint32_t page_size = SPI_Flash_Model::page_size;
constexpr std::uint32_t hw_info_address = 0xFF'0000;

constexpr const char* end_of_stream = "End of stream reached during program\n";

// Bytes that repeat at no boundary of the flash; 0xFF among them only where the generator yields it.
Bytes image_of(std::size_t size) {
    Bytes bytes(size);
    std::uint32_t state = 0x2545'F491;
    for (std::uint8_t& byte : bytes) {
        state = state * 1664525U + 1013904223U;
        byte = static_cast<std::uint8_t>(state >> 24U);
    }
    return bytes;
}

const char* write_file(const Bytes& bytes) {
    std::ofstream("image.bin", std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    return "image.bin";
}

// What an erase of a flash prints that is busy for three reads of its status.
std::string erased_sector(std::uint32_t address) {
    return "Ereasing sector adr " + std::to_string(address) +
           "\n....wait_flash_to_become_ready counter : 4flash_flag_status_register : 128";
}

const std::string erasing = "Ereasing flash (Sector Erase)\n"
                            ".wait_flash_to_become_ready counter : 1flash_flag_status_register : 128";
const std::string programmed = "Programming flash..\nProgram flash completed\n";

class Flash_Programming : public testing::Test {
protected:
    Flash_Programming() {
        loguru::g_stderr_verbosity = loguru::Verbosity_OFF;
        EXPECT_TRUE(m_controller->open());
        // Nothing in the flash reads as erased until it is.
        for (std::uint32_t sector = 0; sector < SPI_Flash_Model::size / sector_size; ++sector) {
            flash().put(sector * sector_size, Bytes(sector_size, 0x5A));
        }
    }

    ~Flash_Programming() override {
        EXPECT_EQ(m_box->spi().lost_bytes(), 0U);
        EXPECT_EQ(m_box->accesses_while_closed(), 0U);
    }

    SPI_Flash_Model& flash() { return m_box->flash(); }

    // Nothing of the flash is changed but the sectors from `address` on, which hold the bytes and are erased
    // behind them.
    void expect_contents(std::uint32_t address, const Bytes& bytes, std::uint32_t sectors) {
        Bytes expected(SPI_Flash_Model::size, 0x5A);
        const auto begin = expected.begin() + address;
        std::fill(begin, begin + sectors * sector_size, std::uint8_t{0xFF});
        std::copy(bytes.begin(), bytes.end(), begin);
        EXPECT_TRUE(flash().bytes(0, SPI_Flash_Model::size) == expected);
    }

    void expect_nothing_changed() { expect_contents(0, {}, 0); }

    Printed program(const Bytes& image, std::uint32_t address, bool result) {
        const char* path = write_file(image);
        return printed_by([&] { EXPECT_EQ(m_controller->program_flash(path, address), result); });
    }

    // Programs a file of that size and checks everything about it.
    void check_size(std::size_t size, std::uint32_t sectors, bool file_ends_first) {
        const Bytes image = image_of(size);
        const Printed printed = program(image, image_address, true);
        const std::size_t whole = size - size % 16;
        expect_contents(image_address, {image.begin(), image.begin() + static_cast<std::ptrdiff_t>(whole)},
                        sectors);
        std::string out = "File size : " + std::to_string(size / 1024) + " KB\n" + erasing;
        for (std::uint32_t i = 0; i < sectors; ++i) {
            out += erased_sector(image_address + i * sector_size);
        }
        EXPECT_EQ(printed.out, out + programmed);
        EXPECT_EQ(printed.err, file_ends_first ? end_of_stream : "");
        EXPECT_EQ(m_waiter.waits(), std::vector<std::chrono::milliseconds>(3 * sectors, 1000ms));

        std::vector<Transaction> transactions{{0x9F, 0, 3, false}};
        for (std::uint32_t i = 0; i < sectors; ++i) {
            transactions.push_back({0x06, 0, 0, false});
            transactions.push_back({0xD8, image_address + i * sector_size, 0, false});
        }
        for (std::size_t done = 0; done < whole; done += page_size) {
            transactions.push_back({0x06, 0, 0, false});
            transactions.push_back({0x02, image_address + static_cast<std::uint32_t>(done),
                                    std::min<std::size_t>(page_size, whole - done), false});
        }
        EXPECT_TRUE(flash().transactions() == transactions);
        EXPECT_FALSE(flash().is_write_enabled());
    }

    Log_Capture m_log;
    Waiter_Guard m_waiter;
    std::shared_ptr<Virtual_Box> m_box = std::make_shared<Virtual_Box>();
    std::unique_ptr<ORBE_Controller_Library> m_controller =
        std::make_unique<ORBE_Controller_Library>(std::make_shared<Virtual_Box_Controller>(m_box), false);
};

TEST_F(Flash_Programming, EmptyFile) {
    check_size(0, 0, false);
}

TEST_F(Flash_Programming, OneByteIsNoWholePiece) {
    check_size(1, 1, true);
}

TEST_F(Flash_Programming, OnePiece) {
    check_size(16, 1, true);
}

TEST_F(Flash_Programming, AByteLessThanAPage) {
    check_size(255, 1, true);
}

TEST_F(Flash_Programming, OnePage) {
    check_size(256, 1, true);
}

TEST_F(Flash_Programming, AByteMoreThanAPage) {
    check_size(257, 1, true);
}

TEST_F(Flash_Programming, AByteLessThanASector) {
    check_size(65535, 1, true);
}

TEST_F(Flash_Programming, OneSector) {
    check_size(65536, 1, false);
}

TEST_F(Flash_Programming, AByteMoreThanASector) {
    check_size(65537, 2, true);
}

TEST_F(Flash_Programming, OneMebibyte) {
    check_size(1048576, 16, false);
}

TEST_F(Flash_Programming, OperationIsLoggedWithItsArguments) {
    program({}, 0x12'0000, true);
    EXPECT_TRUE(m_log.has_scope(0, "program_flash"));
    EXPECT_EQ(m_log.count(0, "path : image.bin, address : 00120000"), 1);
    const auto printed = printed_by([&] { EXPECT_FALSE(m_controller->program_flash(nullptr, 0)); });
    EXPECT_EQ(printed.err, "Dosya acilamaldi\nFile coundn't be opened\n");
    EXPECT_EQ(m_log.count(0, "path : (none), address : 00000000"), 1);
}

TEST_F(Flash_Programming, EveryCallIdentifiesTheFlashAnew) {
    program(image_of(16), 0, true);
    program(image_of(16), 0, true);
    std::size_t identifications = 0;
    for (const Transaction& transaction : flash().transactions()) {
        identifications += transaction.command == 0x9F ? 1U : 0U;
    }
    EXPECT_EQ(identifications, 2U);
    expect_contents(0, image_of(16), 1);
}

TEST_F(Flash_Programming, ImageThatRunsIntoTheRecordIsProgrammedLikeAnyOther) {
    const Bytes image = image_of(sector_size + 256);
    program(image, hw_info_address - sector_size, true);
    expect_contents(hw_info_address - sector_size, image, 2);
}

TEST_F(Flash_Programming, ImageMayEndWithTheFlash) {
    const Bytes image = image_of(2 * sector_size);
    program(image, hw_info_address - sector_size, true);
    expect_contents(hw_info_address - sector_size, image, 2);
    program(image_of(sector_size), hw_info_address, true);
    Bytes both = image_of(sector_size);
    both.insert(both.begin(), image.begin(), image.begin() + sector_size);
    expect_contents(hw_info_address - sector_size, both, 2);
}

TEST_F(Flash_Programming, FileThatWouldRunPastTheEndIsRefused) {
    const Bytes image = image_of(sector_size + 1);
    EXPECT_EQ(program(image, hw_info_address, false).out,
              "File size : 64 KB\n"
              "Exception catched during program_flash command : file does not fit into the flash\n");
    expect_nothing_changed();
    EXPECT_TRUE(flash().transactions().empty());
}

TEST_F(Flash_Programming, FileThatGrowsNearTheEndStaysInTheFlash) {
    m_waiter.on_wait([](std::size_t) { write_file(image_of(2 * sector_size)); });
    program(image_of(16), SPI_Flash_Model::size - 2 * page_size, true);
    Bytes sector(sector_size - 2 * page_size, 0xFF);
    const Bytes written = image_of(2 * page_size);
    sector.insert(sector.end(), written.begin(), written.end());
    expect_contents(hw_info_address, sector, 1);
}

TEST_F(Flash_Programming, ProgressIsReportedSectorBySectorAndPageByPage) {
    const std::uint64_t total = std::uint64_t{2} * 2 * sector_size;
    std::vector<std::tuple<std::string, std::uint64_t, std::uint64_t>> expected{
        {"erasing", sector_size, total}, {"erasing", 2 * sector_size, total}};
    // The first sector, one page of the second, and the half page in which the file ends.
    for (std::uint64_t page = 1; page <= 257; ++page) {
        expected.emplace_back("writing", 2 * sector_size + page * page_size, total);
    }
    expected.emplace_back("writing", total, total);
    decltype(expected) reports;
    const char* path = write_file(image_of(sector_size + page_size + page_size / 2));
    printed_by([&] {
        EXPECT_TRUE(m_controller->program_flash(path, image_address, [&](const Flash_Progress& progress) {
            reports.emplace_back(progress.step, progress.done, progress.total);
        }));
    });
    EXPECT_TRUE(reports == expected);
    EXPECT_EQ(reports.size(), expected.size());
    EXPECT_EQ(reports.back(), expected.back()) << "100 %";
}

TEST_F(Flash_Programming, ProgressOfWholeSectorsEndsWithTheLastPage) {
    std::vector<std::uint64_t> writing;
    const char* path = write_file(image_of(sector_size));
    printed_by([&] {
        EXPECT_TRUE(m_controller->program_flash(path, image_address, [&](const Flash_Progress& progress) {
            EXPECT_EQ(progress.total, 2 * sector_size);
            writing.push_back(progress.done);
        }));
    });
    ASSERT_EQ(writing.size(), 1U + 256U);
    EXPECT_EQ(writing[255], 2 * sector_size - page_size);
    EXPECT_EQ(writing[256], 2 * sector_size);
}

#if defined(__linux__)

// A file that opens, tells no size, and whose beginning cannot be read. Only Linux has one.
constexpr const char* own_memory = "/proc/self/mem";

TEST_F(Flash_Programming, FileThatCannotBeReadFailsTheOperation) {
    const char* path = write_file(image_of(16));
    m_waiter.on_wait([&](std::size_t) {
        std::filesystem::remove(path);
        std::filesystem::create_symlink(own_memory, path);
    });
    const auto printed = printed_by([&] { EXPECT_FALSE(m_controller->program_flash(path, image_address)); });
    EXPECT_NE(printed.out.find("Programming flash..\nException catched during program_flash command : "),
              std::string::npos);
    EXPECT_EQ(printed.err, "");
    expect_contents(image_address, {}, 1);
}

TEST_F(Flash_Programming, FileWithoutASizeIsRefused) {
    const auto printed =
        printed_by([&] { EXPECT_FALSE(m_controller->program_flash(own_memory, image_address)); });
    EXPECT_EQ(printed.out, "Exception catched during program_flash command : file has no size\n");
    expect_nothing_changed();
}

#endif

TEST_F(Flash_Programming, AddressInsideASectorErasesTheSectorAroundIt) {
    const Bytes image = image_of(512);
    program(image, image_address + 0x1000, true);
    Bytes sector(0x1000, 0xFF);
    sector.insert(sector.end(), image.begin(), image.end());
    expect_contents(image_address, sector, 1);
}

TEST_F(Flash_Programming, MissingFileChangesNothing) {
    const auto printed = printed_by([&] { EXPECT_FALSE(m_controller->program_flash("missing.bin", 0)); });
    EXPECT_EQ(printed.out, "");
    EXPECT_EQ(printed.err, "Dosya acilamaldi\nFile coundn't be opened\n");
    expect_nothing_changed();
    EXPECT_TRUE(m_box->writes().empty());
}

TEST_F(Flash_Programming, FileThatGoesAwayDuringTheErasingFailsTheOperation) {
    m_waiter.on_wait([](std::size_t) { std::filesystem::remove("image.bin"); });
    const Printed printed = program(image_of(16), image_address, false);
    EXPECT_EQ(printed.out, "File size : 0 KB\n" + erasing + erased_sector(image_address));
    EXPECT_EQ(printed.err, "Dosya acilamaldi\nFile coundn't be opened\n");
    expect_contents(image_address, {}, 1);
}

TEST_F(Flash_Programming, FileThatShrinksDuringTheErasingEndsEarly) {
    m_waiter.on_wait([](std::size_t) { std::filesystem::resize_file("image.bin", 40); });
    const Bytes image = image_of(65537);
    const Printed printed = program(image, image_address, true);
    EXPECT_EQ(printed.err, end_of_stream);
    expect_contents(image_address, {image.begin(), image.begin() + 32}, 2);
}

TEST_F(Flash_Programming, FileThatGrowsDuringTheErasingStaysInItsSectors) {
    m_waiter.on_wait([](std::size_t) { write_file(image_of(2 * sector_size)); });
    const Printed printed = program(image_of(100), image_address, true);
    EXPECT_EQ(printed.err, "");
    expect_contents(image_address, image_of(sector_size), 1);
}

TEST_F(Flash_Programming, FlashThatIsStillBusyIsWaitedFor) {
    flash().make_busy(5);
    const Printed printed = program(image_of(16), image_address, true);
    EXPECT_EQ(printed.out, "File size : 0 KB\nEreasing flash (Sector Erase)\n"
                           "......wait_flash_to_become_ready counter : 6flash_flag_status_register : 128" +
                               erased_sector(image_address) + programmed);
    EXPECT_EQ(m_waiter.waits(), std::vector<std::chrono::milliseconds>(3, 1000ms));
    expect_contents(image_address, image_of(16), 1);
}

TEST_F(Flash_Programming, SlowPagesAreWaitedForAMillisecondAtATime) {
    flash().set_busy_reads(0, 150);
    const Printed printed = program(image_of(512), image_address, true);
    EXPECT_EQ(printed.err, end_of_stream);
    expect_contents(image_address, image_of(512), 1);
    EXPECT_EQ(m_waiter.waits(), std::vector<std::chrono::milliseconds>(2 * 50, 1ms));
}

TEST_F(Flash_Programming, BusyBitThatSticksAfterAnEraseTimesOut) {
    flash().let_busy_stick();
    const Printed printed = program(image_of(65537), image_address, false);
    EXPECT_EQ(printed.out, "File size : 64 KB\n" + erasing + "Ereasing sector adr 11534336\n" +
                               std::string(480, '.') +
                               "wait_flash_to_become_ready counter : 480"
                               "Exception catched during program_flash command : "
                               "Flash erase/program timeout\n");
    EXPECT_EQ(printed.err, "");
    EXPECT_EQ(m_waiter.waits(), std::vector<std::chrono::milliseconds>(479, 1000ms));
    expect_contents(image_address, {}, 1);
}

TEST_F(Flash_Programming, BusyBitThatSticksAfterAPageTimesOut) {
    flash().set_busy_reads(0, 1);
    flash().let_busy_stick();
    const Printed printed = program(image_of(512), image_address, false);
    EXPECT_EQ(printed.out, "File size : 0 KB\n" + erasing +
                               "Ereasing sector adr 11534336\n"
                               ".wait_flash_to_become_ready counter : 1flash_flag_status_register : 128"
                               "Programming flash..\n"
                               "Exception catched during program_flash command : "
                               "Flash erase/program timeout\n");
    const Bytes image = image_of(page_size);
    expect_contents(image_address, image, 1);
}

TEST_F(Flash_Programming, TransmitFifoThatDrainsLateIsWaitedFor) {
    m_box->spi().transmit_empty_at_look(50);
    program(image_of(16), image_address, true);
    expect_contents(image_address, image_of(16), 1);
}

TEST_F(Flash_Programming, TransmitFifoThatNeverDrainsFailsTheOperation) {
    m_box->spi().transmit_empty_at_look(std::nullopt);
    const Printed printed = program(image_of(16), image_address, false);
    EXPECT_EQ(printed.out,
              "File size : 0 KB\nEreasing flash (Sector Erase)\n"
              "Exception catched during program_flash command : Tx fifo should have been drained\n");
    EXPECT_EQ(m_box->value(SPI_Block_Model::slave_select), 1U);
    expect_nothing_changed();
}

TEST_F(Flash_Programming, ExtraReceivedBytesDoNotDisturb) {
    m_box->spi().add_extra_bytes(19);
    const Printed printed = program(image_of(16), image_address, true);
    EXPECT_EQ(printed.out, "File size : 0 KB\nEreasing flash (Sector Erase)\nNumber of extra reads : 19"
                           ".wait_flash_to_become_ready counter : 1flash_flag_status_register : 128" +
                               erased_sector(image_address) + programmed);
    expect_contents(image_address, image_of(16), 1);
}

TEST_F(Flash_Programming, ReceiveFifoThatNeverEmptiesFailsTheOperation) {
    m_box->spi().let_receive_fifo_stick(true);
    const Printed printed = program(image_of(16), image_address, false);
    EXPECT_EQ(printed.out,
              "File size : 0 KB\nEreasing flash (Sector Erase)\nNumber of extra reads : 20"
              "Exception catched during program_flash command : Rx fifo should have been drained\n");
    EXPECT_EQ(m_box->value(SPI_Block_Model::slave_select), 1U);
    expect_nothing_changed();
}

// ---- The hardware record.

class Hardware_Record : public Flash_Programming {
protected:
    Hardware_Record() {
        m_page = image_of(page_size);
        flash().put(hw_info_address, m_page);
    }

    static ORBE_HW_Info record() {
        ORBE_HW_Info info;
        std::iota(info.bytes.begin(), info.bytes.end(), std::uint8_t{0xE0});
        return info;
    }

    void expect_record_untouched() {
        EXPECT_EQ(flash().bytes(hw_info_address, page_size), m_page);
        EXPECT_EQ(flash().byte_at(hw_info_address + page_size), 0x5A);
    }

    Bytes m_page;
};

TEST_F(Hardware_Record, IsReadByteForByte) {
    std::unique_ptr<ORBE_HW_Info> info;
    const auto printed = printed_by([&] { info = m_controller->read_ORBE_HW_info(); });
    ASSERT_NE(info, nullptr);
    EXPECT_EQ(Bytes(info->bytes.begin(), info->bytes.end()), Bytes(m_page.begin(), m_page.begin() + 32));
    EXPECT_EQ(printed.out, "Reading flash..\nReading flash completed\n");
    EXPECT_EQ(printed.err, "");
    EXPECT_EQ(flash().transactions(),
              (std::vector<Transaction>{{0x9F, 0, 3, false}, {0x03, hw_info_address, 256, false}}));
    EXPECT_TRUE(m_log.has_scope(0, "read_ORBE_HW_info"));
    expect_record_untouched();
}

TEST_F(Hardware_Record, OfABusyFlashIsReadWhenItIsReady) {
    flash().make_busy(7);
    std::unique_ptr<ORBE_HW_Info> info;
    printed_by([&] { info = m_controller->read_ORBE_HW_info(); });
    ASSERT_NE(info, nullptr);
    EXPECT_EQ(Bytes(info->bytes.begin(), info->bytes.end()), Bytes(m_page.begin(), m_page.begin() + 32));
}

TEST_F(Hardware_Record, IsReplacedAndTheRestOfItsPageKept) {
    const auto printed = printed_by([&] { EXPECT_TRUE(m_controller->program_ORBE_HW_info(record())); });
    EXPECT_EQ(printed.out, "Reading flash..\nReading flash completed\n" + erasing +
                               erased_sector(hw_info_address) + programmed);
    EXPECT_EQ(printed.err, "");
    Bytes expected = m_page;
    const ORBE_HW_Info info = record();
    std::copy(info.bytes.begin(), info.bytes.end(), expected.begin());
    expect_contents(hw_info_address, expected, 1);
    EXPECT_EQ(flash().transactions(), (std::vector<Transaction>{{0x9F, 0, 3, false},
                                                                {0x03, hw_info_address, 256, false},
                                                                {0x06, 0, 0, false},
                                                                {0xD8, hw_info_address, 0, false},
                                                                {0x06, 0, 0, false},
                                                                {0x02, hw_info_address, 256, false}}));
    EXPECT_EQ(m_waiter.waits(), std::vector<std::chrono::milliseconds>(3, 1000ms));
    EXPECT_TRUE(m_log.has_scope(0, "program_ORBE_HW_info"));

    std::unique_ptr<ORBE_HW_Info> read_back;
    printed_by([&] { read_back = m_controller->read_ORBE_HW_info(); });
    ASSERT_NE(read_back, nullptr);
    EXPECT_EQ(*read_back, record());
}

TEST_F(Hardware_Record, ThatCannotBeReadIsNotReplaced) {
    m_box->spi().transmit_empty_at_look(std::nullopt);
    const std::string text =
        "Reading flash..\n"
        "Exception catched during read_flash command : Tx fifo should have been drained\n";
    auto printed = printed_by([&] { EXPECT_EQ(m_controller->read_ORBE_HW_info(), nullptr); });
    EXPECT_EQ(printed.out, text);
    printed = printed_by([&] { EXPECT_FALSE(m_controller->program_ORBE_HW_info(record())); });
    EXPECT_EQ(printed.out, text);
    expect_record_untouched();
}

TEST_F(Hardware_Record, OfAFlashThatStaysBusyIsNotReplaced) {
    flash().let_busy_stick();
    flash().make_busy(1);
    const std::string text = "Reading flash..\n"
                             "Exception catched during read_flash command : Flash erase/program timeout\n";
    auto printed = printed_by([&] { EXPECT_FALSE(m_controller->program_ORBE_HW_info(record())); });
    EXPECT_EQ(printed.out, text);
    printed = printed_by([&] { EXPECT_EQ(m_controller->read_ORBE_HW_info(), nullptr); });
    EXPECT_EQ(printed.out, text);
    expect_record_untouched();
}

TEST_F(Hardware_Record, EraseThatDoesNotEndFailsTheReplacing) {
    flash().let_busy_stick();
    const auto printed = printed_by([&] { EXPECT_FALSE(m_controller->program_ORBE_HW_info(record())); });
    EXPECT_EQ(printed.out, "Reading flash..\nReading flash completed\n" + erasing +
                               "Ereasing sector adr 16711680\n" + std::string(480, '.') +
                               "wait_flash_to_become_ready counter : 480"
                               "Exception catched during program_flash command : "
                               "Flash erase/program timeout\n");
}

TEST_F(Hardware_Record, SurvivesAnotherDesignInTheFlashAndAReboot) {
    program(image_of(sector_size), image_address, true);
    printed_by([&] { EXPECT_TRUE(m_controller->icap_boot(Virtual_Box::neuropixels_flash_address)); });
    EXPECT_TRUE(m_controller->open());
    std::unique_ptr<ORBE_HW_Info> info;
    printed_by([&] { info = m_controller->read_ORBE_HW_info(); });
    ASSERT_NE(info, nullptr);
    EXPECT_EQ(Bytes(info->bytes.begin(), info->bytes.end()), Bytes(m_page.begin(), m_page.begin() + 32));
}

// ---- Simulation mode: every register reads 0xC3, so that the transmit FIFO never shows as empty.

// Without the lines about register accesses.
std::string without_accesses(const std::string& text) {
    std::string rest;
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = std::min(text.find('\n', begin), text.size() - 1) + 1;
        if (text.compare(begin, 20, "CP_Sim_MemMapped_AXI") != 0) {
            rest += text.substr(begin, end - begin);
        }
        begin = end;
    }
    return rest;
}

TEST(Flash_In_Simulation, EveryOperationFailsAtOnceWithItsText) {
    loguru::g_stderr_verbosity = loguru::Verbosity_OFF;
    const Waiter_Guard waiter;
    ORBE_Controller_Library controller(true);
    ASSERT_TRUE(controller.open());
    const char* path = write_file(image_of(256));
    const std::string reading =
        "Reading flash..\n"
        "Exception catched during read_flash command : Tx fifo should have been drained\n";

    auto printed = printed_by([&] { EXPECT_FALSE(controller.program_flash(path, 0)); });
    EXPECT_EQ(without_accesses(printed.out),
              "File size : 0 KB\nEreasing flash (Sector Erase)\n"
              "Exception catched during program_flash command : Tx fifo should have been drained\n");
    EXPECT_EQ(printed.err, "");
    printed = printed_by([&] { EXPECT_EQ(controller.read_ORBE_HW_info(), nullptr); });
    EXPECT_EQ(without_accesses(printed.out), reading);
    printed = printed_by([&] { EXPECT_FALSE(controller.program_ORBE_HW_info({})); });
    EXPECT_EQ(without_accesses(printed.out), reading);
    EXPECT_EQ(waiter.waits(), std::vector<std::chrono::milliseconds>{});
}

} // namespace
