// The programmer's transactions, register access by register access, and its texts. What it leaves in a flash
// is tested on the virtual box.
#include "flash/SPI_Flash_Programmer.h"

#include "Printed.h"
#include "Register_Recorder.h"
#include "SPI_Accesses.h"
#include "Waiter_Guard.h"
#include "fpga/SPI_Module.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace {

using namespace std::chrono_literals;
using Pelgar::ORBE::SPI_Flash_Programmer;
using Pelgar::ORBE::SPI_Module;
using Pelgar::ORBE::test::printed_by;
using Pelgar::ORBE::test::read_of;
using Pelgar::ORBE::test::Register_Recorder;
using Pelgar::ORBE::test::SPI_Accesses;
using Pelgar::ORBE::test::text_thrown_by;
using Pelgar::ORBE::test::Waiter_Guard;
using Bytes = std::vector<std::uint8_t>;

constexpr std::uint32_t status = SPI_Accesses::status;
constexpr std::uint32_t receive = SPI_Accesses::receive;

SPI_Accesses identified() {
    return SPI_Accesses().transaction({0x9F, 0, 0, 0});
}

class SPIFlashProgrammer : public testing::Test {
protected:
    SPIFlashProgrammer() { m_registers.set_value(status, SPI_Accesses::idle); }

    // What comes back for the command byte, and the register's value behind it.
    void queue_register_reads(const Bytes& values) {
        for (const std::uint8_t value : values) {
            m_registers.queue_reads(receive, {0, value});
        }
    }

    void queue_identification() { m_registers.queue_reads(receive, {0, 0x20, 0xBA, 0x18}); }

    // The flash is busy for ever: whatever is read has its bit 0 set.
    void let_flash_be_busy() { m_registers.set_value(receive, 0x01); }

    static std::string dots(std::size_t count) { return std::string(count, '.'); }

    static const char* file_of(std::size_t size) {
        std::ofstream("image.bin", std::ios::binary) << std::string(size, 'x');
        return "image.bin";
    }

    Waiter_Guard m_waiter;
    Register_Recorder m_registers;
    SPI_Module m_spi{&m_registers, 0x500};
    SPI_Flash_Programmer m_programmer{&m_spi};
};

TEST_F(SPIFlashProgrammer, TouchesNothingWhenMade) {
    EXPECT_TRUE(m_registers.accesses().empty());
}

TEST_F(SPIFlashProgrammer, IdentifiesOnceAheadOfItsFirstCommand) {
    m_programmer.wait_flash_to_become_ready(false);
    const SPI_Accesses ready = SPI_Accesses().transaction({0x05, 0}).transaction({0x70, 0});
    EXPECT_EQ(m_registers.accesses(), identified().transaction({0x05, 0}).transaction({0x70, 0}).all());
    m_registers.clear_accesses();
    m_programmer.wait_flash_to_become_ready(false);
    EXPECT_EQ(m_registers.accesses(), ready.all());
    SPI_Flash_Programmer another(&m_spi);
    m_registers.clear_accesses();
    another.wait_flash_to_become_ready(false);
    EXPECT_EQ(m_registers.accesses(), identified().transaction({0x05, 0}).transaction({0x70, 0}).all());
}

TEST_F(SPIFlashProgrammer, ReadyFlashTakesOnePoll) {
    queue_identification();
    queue_register_reads({0xFE, 0x81}); // bit 0 of the status alone counts
    const auto printed = printed_by([&] { m_programmer.wait_flash_to_become_ready(true); });
    EXPECT_EQ(printed.out, ".wait_flash_to_become_ready counter : 1flash_flag_status_register : 129");
    EXPECT_EQ(printed.err, "");
    EXPECT_EQ(m_waiter.waits(), std::vector<std::chrono::milliseconds>{});
}

TEST_F(SPIFlashProgrammer, SlowWaitSleepsASecondBetweenPolls) {
    queue_identification();
    queue_register_reads({0x03, 0x01, 0x01, 0x00, 0x80});
    const auto printed = printed_by([&] { m_programmer.wait_flash_to_become_ready(true); });
    EXPECT_EQ(printed.out, "....wait_flash_to_become_ready counter : 4flash_flag_status_register : 128");
    EXPECT_EQ(m_waiter.waits(), (std::vector<std::chrono::milliseconds>{1000ms, 1000ms, 1000ms}));
}

TEST_F(SPIFlashProgrammer, FastWaitDoesNotSleep) {
    queue_identification();
    queue_register_reads({0x03, 0x01, 0x01, 0x00, 0x80});
    const auto printed = printed_by([&] { m_programmer.wait_flash_to_become_ready(false); });
    EXPECT_EQ(printed.out, "....wait_flash_to_become_ready counter : 4flash_flag_status_register : 128");
    EXPECT_EQ(m_waiter.waits(), std::vector<std::chrono::milliseconds>{});
}

TEST_F(SPIFlashProgrammer, FlashThatIsReadyAtThe480thPollIsInTime) {
    queue_identification();
    queue_register_reads(Bytes(479, 0x01));
    const auto printed = printed_by([&] { m_programmer.wait_flash_to_become_ready(true); });
    EXPECT_EQ(printed.out,
              dots(480) + "wait_flash_to_become_ready counter : 480flash_flag_status_register : 0");
    EXPECT_EQ(m_waiter.waits(), std::vector<std::chrono::milliseconds>(479, 1000ms));
}

TEST_F(SPIFlashProgrammer, BusyBitThatNeverClearsIsGivenUpAfter480Polls) {
    for (const bool slow : {false, true}) {
        let_flash_be_busy();
        m_registers.clear_accesses();
        const std::size_t waits_before = m_waiter.waits().size();
        SPI_Flash_Programmer programmer(&m_spi);
        const auto printed = printed_by([&] {
            EXPECT_EQ(
                text_thrown_by<std::runtime_error>([&] { programmer.wait_flash_to_become_ready(slow); }),
                "Flash erase/program timeout");
        });
        EXPECT_EQ(printed.out, dots(480) + "wait_flash_to_become_ready counter : 480");
        EXPECT_EQ(m_waiter.waits().size() - waits_before, slow ? 479U : 0U);
        // Identification, and 480 times the status; the flag status is not read.
        EXPECT_EQ(m_registers.writes_to(SPI_Accesses::transmit).size(), 4U + 480U * 2U);
    }
    EXPECT_EQ(m_waiter.count(1000ms), 479U);
}

TEST_F(SPIFlashProgrammer, SectorCountIsRoundedUp) {
    const std::vector<std::pair<std::uint64_t, std::uint64_t>> counts{
        {0, 0},
        {1, 1},
        {16, 1},
        {65535, 1},
        {65536, 1},
        {65537, 2},
        {131072, 2},
        {131073, 3},
        {1048576, 16},
        {1048577, 17},
        {65536 * 255 + 1, 256},
        {65536 * 256 - 1, 256},
        {65536 * 256, 256},
    };
    for (const auto& [bytes, sectors] : counts) {
        EXPECT_EQ(SPI_Flash_Programmer::sector_count(bytes), sectors) << bytes;
    }
}

TEST_F(SPIFlashProgrammer, SectorCountHasTheGrainOfSinglePrecisionAbove16MiB) {
    EXPECT_EQ(SPI_Flash_Programmer::sector_count(65536 * 256 + 1), 256U) << "the byte is rounded off";
    EXPECT_EQ(SPI_Flash_Programmer::sector_count(65536 * 256 + 2), 257U);
    EXPECT_EQ(SPI_Flash_Programmer::sector_count(65536 * 512 + 2), 512U);
    EXPECT_EQ(SPI_Flash_Programmer::sector_count(65536 * 512 + 3), 513U);
    EXPECT_EQ(SPI_Flash_Programmer::sector_count(0xFFFF'FFFF), 65536U);
}

TEST_F(SPIFlashProgrammer, ProgramsAFileWithExactlyTheseAccesses) {
    // 35 bytes: two whole pieces, which make one page that is cut short; the last three are left out.
    {
        std::ofstream file("image.bin", std::ios::binary);
        for (int i = 0; i < 35; ++i) {
            file.put(static_cast<char>(0x40 + i));
        }
    }
    const auto printed = printed_by([&] { EXPECT_TRUE(m_programmer.program_flash("image.bin", 0xB0'0000)); });
    Bytes first(16);
    Bytes second(16);
    for (std::uint8_t i = 0; i < 16; ++i) {
        first[i] = static_cast<std::uint8_t>(0x40 + i);
        second[i] = static_cast<std::uint8_t>(0x50 + i);
    }
    SPI_Accesses expected = identified();
    expected.transaction({0x05, 0}).transaction({0x70, 0});
    expected.transaction({0x06}).transaction({0xD8, 0xB0, 0, 0});
    expected.transaction({0x05, 0}).transaction({0x70, 0});
    expected.transaction({0x06});
    expected.select().load({0x02, 0xB0, 0, 0}).load(first).load(second).deselect();
    expected.transaction({0x05, 0});
    EXPECT_EQ(m_registers.accesses(), expected.all());
    EXPECT_EQ(printed.out, "File size : 0 KB\n"
                           "Ereasing flash (Sector Erase)\n"
                           ".wait_flash_to_become_ready counter : 1flash_flag_status_register : 0"
                           "Ereasing sector adr 11534336\n"
                           ".wait_flash_to_become_ready counter : 1flash_flag_status_register : 0"
                           "Programming flash..\n"
                           "Program flash completed\n");
    EXPECT_EQ(printed.err, "End of stream reached during program\n");
}

TEST_F(SPIFlashProgrammer, AddressGoesOutMostSignificantByteFirstPageByPage) {
    EXPECT_TRUE(m_programmer.program_flash(file_of(512), 0x12'3400));
    const auto sent = m_registers.writes_to(SPI_Accesses::transmit);
    // Identification, status, flag status, write enable, erase, status, flag status.
    const std::size_t erase = 4 + 2 + 2 + 1;
    EXPECT_EQ((std::vector<std::uint32_t>(sent.begin() + erase, sent.begin() + erase + 4)),
              (std::vector<std::uint32_t>{0xD8, 0x12, 0x34, 0x00}));
    const std::size_t page = erase + 4 + 2 + 2;
    EXPECT_EQ((std::vector<std::uint32_t>(sent.begin() + page, sent.begin() + page + 5)),
              (std::vector<std::uint32_t>{0x06, 0x02, 0x12, 0x34, 0x00}));
    const std::size_t next = page + 5 + 256 + 2;
    EXPECT_EQ((std::vector<std::uint32_t>(sent.begin() + next, sent.begin() + next + 5)),
              (std::vector<std::uint32_t>{0x06, 0x02, 0x12, 0x35, 0x00}));
}

TEST_F(SPIFlashProgrammer, FileThatCannotBeOpenedLeavesTheFlashAlone) {
    std::filesystem::create_directory("directory");
    for (const char* path : {"missing.bin", "directory", "", static_cast<const char*>(nullptr)}) {
        const auto printed = printed_by([&] { EXPECT_FALSE(m_programmer.program_flash(path, 0)); });
        EXPECT_EQ(printed.out, "");
        EXPECT_EQ(printed.err, "Dosya acilamaldi\nFile coundn't be opened\n");
    }
    EXPECT_TRUE(m_registers.accesses().empty());
}

TEST_F(SPIFlashProgrammer, FileThatWouldRunPastTheEndIsRefusedBeforeAnythingIsErased) {
    const std::string too_large =
        "Exception catched during program_flash command : file does not fit into the flash\n";
    const std::vector<std::tuple<std::size_t, std::uint32_t, std::string>> cases{
        {65537, 0xFF'0000, "File size : 64 KB\n" + too_large},
        {65536, 0xFF'0001, "File size : 64 KB\n" + too_large},
        {2, 0xFF'FFFF, "File size : 0 KB\n" + too_large},
        {1, 0x100'0000, "File size : 0 KB\n" + too_large},
        {1, 0xFFFF'0000, "File size : 0 KB\n" + too_large},
        {1, 0xFFFF'FFFF, "File size : 0 KB\n" + too_large},
    };
    for (const auto& [size, address, text] : cases) {
        const char* path = file_of(size);
        const auto printed = printed_by([&] { EXPECT_FALSE(m_programmer.program_flash(path, address)); });
        EXPECT_EQ(printed.out, text) << size << " bytes at " << address;
        EXPECT_EQ(printed.err, "");
    }
    std::filesystem::resize_file("image.bin", 0x100'0001);
    const auto printed = printed_by([&] { EXPECT_FALSE(m_programmer.program_flash("image.bin", 0)); });
    EXPECT_EQ(printed.out, "File size : 16384 KB\n" + too_large);
    EXPECT_TRUE(m_registers.accesses().empty());
}

TEST_F(SPIFlashProgrammer, EmptyFileIsRefusedNowhere) {
    const char* path = file_of(0);
    for (const std::uint32_t address : {0x0U, 0xFF'0000U, 0xFF'FFFFU, 0x100'0000U, 0xFFFF'FFFFU}) {
        const auto printed = printed_by([&] { EXPECT_TRUE(m_programmer.program_flash(path, address)); });
        EXPECT_EQ(printed.out, "File size : 0 KB\nEreasing flash (Sector Erase)\n"
                               ".wait_flash_to_become_ready counter : 1flash_flag_status_register : 0"
                               "Programming flash..\nProgram flash completed\n");
        EXPECT_EQ(printed.err, "");
    }
}

TEST_F(SPIFlashProgrammer, BusyFlashFailsTheProgrammingBeforeItsFirstSector) {
    let_flash_be_busy();
    const char* path = file_of(16);
    const auto printed = printed_by([&] { EXPECT_FALSE(m_programmer.program_flash(path, 0)); });
    EXPECT_EQ(printed.out,
              "File size : 0 KB\nEreasing flash (Sector Erase)\n" + dots(480) +
                  "wait_flash_to_become_ready counter : 480"
                  "Exception catched during program_flash command : Flash erase/program timeout\n");
    EXPECT_EQ(printed.err, "");
    EXPECT_EQ(m_waiter.waits(), std::vector<std::chrono::milliseconds>{});
}

TEST_F(SPIFlashProgrammer, FifoErrorsFailEveryOperationWithItsText) {
    const char* path = file_of(16);
    const std::vector<std::pair<std::uint32_t, std::string>> faults{
        {0x1, "Tx fifo should have been drained\n"},
        {0x4, "Rx fifo should have been drained\n"},
    };
    for (const auto& [value, text] : faults) {
        m_registers.set_value(status, value);
        const std::string extra = value == 0x4 ? "Number of extra reads : 20" : "";
        SPI_Flash_Programmer programming(&m_spi);
        auto printed = printed_by([&] { EXPECT_FALSE(programming.program_flash(path, 0)); });
        EXPECT_EQ(printed.out, "File size : 0 KB\nEreasing flash (Sector Erase)\n" + extra +
                                   "Exception catched during program_flash command : " + text);
        SPI_Flash_Programmer rewriting(&m_spi);
        printed = printed_by([&] { EXPECT_FALSE(rewriting.rewrite_sector(0, Bytes(256))); });
        EXPECT_EQ(printed.out, "Ereasing flash (Sector Erase)\n" + extra +
                                   "Exception catched during program_flash command : " + text);
        SPI_Flash_Programmer erasing(&m_spi);
        printed = printed_by([&] { EXPECT_FALSE(erasing.erase_flash()); });
        EXPECT_EQ(printed.out, "Ereasing flash (Bulk Erase) this will take some minutes\n" + extra +
                                   "Exception catched during erase_flash command : " + text);
        SPI_Flash_Programmer reading(&m_spi);
        std::string buffer = "before";
        printed = printed_by([&] { EXPECT_FALSE(reading.read_flash(0, 16, &buffer)); });
        EXPECT_EQ(printed.out,
                  "Reading flash..\n" + extra + "Exception catched during read_flash command : " + text);
        EXPECT_EQ(buffer, "");
    }
}

TEST_F(SPIFlashProgrammer, BulkErase) {
    queue_identification();
    queue_register_reads({0x01, 0x00, 0x80});    // fast wait
    m_registers.queue_reads(receive, {0, 0});    // write enable, bulk erase
    queue_register_reads({0x01, 0x01, 0, 0x80}); // slow wait
    const auto printed = printed_by([&] { EXPECT_TRUE(m_programmer.erase_flash()); });
    EXPECT_EQ(printed.out, "Ereasing flash (Bulk Erase) this will take some minutes\n"
                           "..wait_flash_to_become_ready counter : 2flash_flag_status_register : 128"
                           "...wait_flash_to_become_ready counter : 3flash_flag_status_register : 128"
                           "Erase flash completed\n");
    EXPECT_EQ(printed.err, "");
    EXPECT_EQ(m_registers.writes_to(SPI_Accesses::transmit),
              (std::vector<std::uint32_t>{0x9F, 0,    0,    0, 0x05, 0, 0x05, 0, 0x70, 0,
                                          0x06, 0xC7, 0x05, 0, 0x05, 0, 0x05, 0, 0x70, 0}));
    EXPECT_EQ(m_waiter.waits(), (std::vector<std::chrono::milliseconds>{1000ms, 1000ms}));
}

TEST_F(SPIFlashProgrammer, BulkEraseOfABusyFlashTimesOut) {
    let_flash_be_busy();
    const auto printed = printed_by([&] { EXPECT_FALSE(m_programmer.erase_flash()); });
    EXPECT_EQ(printed.out,
              "Ereasing flash (Bulk Erase) this will take some minutes\n" + dots(480) +
                  "wait_flash_to_become_ready counter : 480"
                  "Exception catched during erase_flash command : Flash erase/program timeout\n");
    for (const std::uint32_t byte : m_registers.writes_to(SPI_Accesses::transmit)) {
        EXPECT_NE(byte, 0xC7U);
    }
}

TEST_F(SPIFlashProgrammer, ReadsBack) {
    queue_identification();
    queue_register_reads({0x00});
    m_registers.queue_reads(receive, {0, 0, 0, 0});
    Bytes content(32);
    for (std::uint8_t i = 0; i < 32; ++i) {
        content[i] = static_cast<std::uint8_t>(0xF0 + i);
    }
    m_registers.queue_reads(receive, {content.begin(), content.end()});
    std::string buffer = "before";
    const auto printed = printed_by([&] { EXPECT_TRUE(m_programmer.read_flash(0xFE'DC10, 32, &buffer)); });
    EXPECT_EQ(printed.out, "Reading flash..\nReading flash completed\n");
    EXPECT_EQ(printed.err, "");
    EXPECT_EQ(buffer, std::string(content.begin(), content.end()));
    SPI_Accesses expected;
    expected.transaction({0x9F, 0, 0, 0}, {0, 0x20, 0xBA, 0x18}).transaction({0x05, 0});
    expected.select().load({0x03, 0xFE, 0xDC, 0x10});
    expected.load(Bytes(16), {content.begin(), content.begin() + 16});
    expected.load(Bytes(16), {content.begin() + 16, content.end()}).deselect();
    EXPECT_EQ(m_registers.accesses(), expected.all());
}

TEST_F(SPIFlashProgrammer, ReadingABusyFlashTimesOut) {
    let_flash_be_busy();
    std::string buffer = "before";
    const auto printed = printed_by([&] { EXPECT_FALSE(m_programmer.read_flash(0, 16, &buffer)); });
    EXPECT_EQ(printed.out, "Reading flash..\n"
                           "Exception catched during read_flash command : Flash erase/program timeout\n");
    EXPECT_EQ(buffer, "");
    // A hundred polls at once, then one a millisecond.
    EXPECT_EQ(m_waiter.waits(), std::vector<std::chrono::milliseconds>(379, 1ms));
}

} // namespace
