#include "fpga/SPI_Module.h"

#include "Printed.h"
#include "Register_Recorder.h"
#include "SPI_Accesses.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <numeric>
#include <stdexcept>
#include <vector>

namespace {

using Pelgar::ORBE::SPI_Module;
using Pelgar::ORBE::test::printed_by;
using Pelgar::ORBE::test::read_of;
using Pelgar::ORBE::test::Register_Recorder;
using Pelgar::ORBE::test::SPI_Accesses;
using Pelgar::ORBE::test::text_thrown_by;
using Pelgar::ORBE::test::write_of;
using Bytes = std::vector<std::uint8_t>;

constexpr std::uint32_t status = SPI_Accesses::status;
constexpr std::uint32_t receive = SPI_Accesses::receive;

Bytes counted(std::size_t count, std::uint8_t first) {
    Bytes bytes(count);
    std::iota(bytes.begin(), bytes.end(), first);
    return bytes;
}

class SPIModule : public testing::Test {
protected:
    SPIModule() { m_registers.set_value(status, SPI_Accesses::idle); }

    Register_Recorder m_registers;
    SPI_Module m_spi{&m_registers, 0x500};
};

TEST_F(SPIModule, PrintsItsBaseAndTouchesNothingWhenMade) {
    const auto printed = printed_by([&] {
        const SPI_Module spi(&m_registers, 0x500);
        EXPECT_EQ(spi.base_address(), 0x500U);
        EXPECT_EQ(spi.largest_transmit_polls(), 0U);
    });
    EXPECT_EQ(printed.out, "SPI_Module ctor at base adr : 500\n");
    EXPECT_TRUE(m_registers.accesses().empty());
}

TEST_F(SPIModule, TransactionMakesExactlyTheseAccesses) {
    m_registers.queue_reads(receive, {0x11, 0x22, 0x33, 0x44});
    const auto printed = printed_by([&] { m_spi.write_command(Bytes{0xD8, 0x12, 0x34, 0x56}); });
    EXPECT_EQ(m_registers.accesses(), (std::vector{
                                          write_of(0x570, 0),
                                          write_of(0x560, 0x186),
                                          write_of(0x568, 0xD8),
                                          write_of(0x568, 0x12),
                                          write_of(0x568, 0x34),
                                          write_of(0x568, 0x56),
                                          write_of(0x560, 0x86),
                                          read_of(0x564, 0x5),
                                          read_of(0x56C, 0x11),
                                          read_of(0x56C, 0x22),
                                          read_of(0x56C, 0x33),
                                          read_of(0x56C, 0x44),
                                          read_of(0x564, 0x5),
                                          write_of(0x570, 1),
                                      }));
    EXPECT_EQ(printed.out, "");
    EXPECT_EQ(printed.err, "");
}

TEST_F(SPIModule, AnswerIsWhatComesBackBehindTheCommand) {
    m_registers.queue_reads(receive, {0xFF, 0x20, 0xBA, 0x118});
    Bytes answer(3);
    m_spi.read_command(Bytes{0x9F}, answer);
    EXPECT_EQ(answer, (Bytes{0x20, 0xBA, 0x18})) << "a byte a read";
    SPI_Accesses expected;
    expected.select().start({0x9F, 0, 0, 0}).add(read_of(status, 0x5));
    expected.add(read_of(receive, 0xFF)).add(read_of(receive, 0x20)).add(read_of(receive, 0xBA));
    expected.add(read_of(receive, 0x118)).add(read_of(status, 0x5)).deselect();
    EXPECT_EQ(m_registers.accesses(), expected.all());
}

TEST_F(SPIModule, CommandAndDataShareALoadWhenTheFifoHoldsBoth) {
    const Bytes data = counted(12, 0x40);
    m_spi.write_command(Bytes{0x02, 1, 2, 3}, data);
    Bytes load{0x02, 1, 2, 3};
    load.insert(load.end(), data.begin(), data.end());
    EXPECT_EQ(m_registers.accesses(), SPI_Accesses().transaction(load).all());
}

TEST_F(SPIModule, LongerTransferGoesInLoadsOf16BytesBehindTheCommand) {
    const Bytes data = counted(40, 0x40);
    m_spi.write_command(Bytes{0x02, 1, 2, 3}, data);
    SPI_Accesses expected;
    expected.select().load({0x02, 1, 2, 3});
    expected.load({data.begin(), data.begin() + 16}).load({data.begin() + 16, data.begin() + 32});
    expected.load({data.begin() + 32, data.end()}).deselect();
    EXPECT_EQ(m_registers.accesses(), expected.all());
}

TEST_F(SPIModule, DataThatWouldOverflowTheFifoByOneByteGetsALoadOfItsOwn) {
    const Bytes data = counted(13, 0x40);
    m_spi.write_command(Bytes{0x02, 1, 2, 3}, data);
    EXPECT_EQ(m_registers.accesses(),
              SPI_Accesses().select().load({0x02, 1, 2, 3}).load(data).deselect().all());
}

TEST_F(SPIModule, LongAnswerComesInLoadsOf16Bytes) {
    const Bytes content = counted(32, 0x80);
    m_registers.queue_reads(receive, {0, 0, 0, 0});
    m_registers.queue_reads(receive, {content.begin(), content.end()});
    Bytes answer(32);
    m_spi.read_command(Bytes{0x03, 0xFF, 0, 0}, answer);
    EXPECT_EQ(answer, content);
    SPI_Accesses expected;
    expected.select().load({0x03, 0xFF, 0, 0});
    expected.load(Bytes(16), {content.begin(), content.begin() + 16});
    expected.load(Bytes(16), {content.begin() + 16, content.end()}).deselect();
    EXPECT_EQ(m_registers.accesses(), expected.all());
}

TEST_F(SPIModule, WaitsUntilTheTransmitFifoIsEmptyAndRemembersTheMostPolls) {
    m_registers.queue_reads(status, {0x0, 0xFFFF'FFFB, 0x4}); // bit 2 alone counts
    m_spi.write_command(Bytes{0x06});
    SPI_Accesses expected;
    expected.select().start({0x06});
    expected.add(read_of(status, 0)).add(read_of(status, 0xFFFF'FFFB)).add(read_of(status, 0x4));
    expected.add(read_of(receive, 0)).add(read_of(status, 0x5)).deselect();
    EXPECT_EQ(m_registers.accesses(), expected.all());
    EXPECT_EQ(m_spi.largest_transmit_polls(), 3U);
    m_spi.write_command(Bytes{0x06});
    EXPECT_EQ(m_spi.largest_transmit_polls(), 3U) << "the largest so far";
}

TEST_F(SPIModule, TransmitFifoThatIsEmptyAtThe50thPollIsInTime) {
    m_registers.queue_reads(status, std::vector<std::uint32_t>(49, 0x1));
    m_spi.write_command(Bytes{0x06});
    EXPECT_EQ(m_spi.largest_transmit_polls(), 50U);
}

TEST_F(SPIModule, TransmitFifoThatNeverDrainsIsGivenUpAfter50Polls) {
    m_registers.set_value(status, 0x1);
    const auto printed = printed_by([&] {
        EXPECT_EQ(text_thrown_by<std::runtime_error>([&] { m_spi.write_command(Bytes{0x06}); }),
                  "Tx fifo should have been drained");
    });
    EXPECT_EQ(m_registers.accesses(), SPI_Accesses()
                                          .select()
                                          .start({0x06})
                                          .add(read_of(status, 0x1), 50)
                                          .deselect() // not left selected
                                          .all());
    EXPECT_EQ(printed.out, "");
    EXPECT_EQ(m_spi.largest_transmit_polls(), 50U);
}

TEST_F(SPIModule, ExtraBytesAreReadAwayAndCounted) {
    m_registers.queue_reads(status, {0x4, 0x4, 0xFFFF'FFFE, 0x1}); // the first one ends the transmit wait
    const auto printed = printed_by([&] { m_spi.write_command(Bytes{0x06}); });
    SPI_Accesses expected;
    expected.select().start({0x06}).add(read_of(status, 0x4)).add(read_of(receive, 0));
    expected.add(read_of(status, 0x4)).add(read_of(receive, 0));
    expected.add(read_of(status, 0xFFFF'FFFE)).add(read_of(receive, 0));
    expected.add(read_of(status, 0x1)).deselect();
    EXPECT_EQ(m_registers.accesses(), expected.all());
    EXPECT_EQ(printed.out, "Number of extra reads : 2");
    EXPECT_EQ(printed.err, "");
}

TEST_F(SPIModule, NineteenExtraBytesAreReadAway) {
    m_registers.queue_reads(status, std::vector<std::uint32_t>(20, 0x4));
    const auto printed = printed_by([&] { m_spi.write_command(Bytes{0x06}); });
    EXPECT_EQ(printed.out, "Number of extra reads : 19");
}

TEST_F(SPIModule, ReceiveFifoThatNeverEmptiesIsGivenUpAfter20Reads) {
    m_registers.set_value(status, 0x4);
    const auto printed = printed_by([&] {
        EXPECT_EQ(text_thrown_by<std::runtime_error>([&] { m_spi.write_command(Bytes{0x06}); }),
                  "Rx fifo should have been drained");
    });
    SPI_Accesses expected;
    expected.select().start({0x06}).add(read_of(status, 0x4)).add(read_of(receive, 0));
    for (int i = 0; i < 20; ++i) {
        expected.add(read_of(status, 0x4)).add(read_of(receive, 0));
    }
    expected.deselect();
    EXPECT_EQ(m_registers.accesses(), expected.all());
    EXPECT_EQ(printed.out, "Number of extra reads : 20");
}

TEST_F(SPIModule, ErrorInALaterLoadEndsTheTransaction) {
    m_registers.queue_reads(status, {0x5, 0x5});
    m_registers.set_value(status, 0x1);
    EXPECT_EQ(text_thrown_by<std::runtime_error>([&] {
                  m_spi.write_command(Bytes{2, 0, 0, 0}, Bytes(32));
              }),
              "Tx fifo should have been drained");
    EXPECT_EQ(m_registers.writes_to(SPI_Accesses::slave_select), (std::vector<std::uint32_t>{0, 1}));
    EXPECT_EQ(m_registers.writes_to(SPI_Accesses::transmit).size(), 4U + 16U);
}

} // namespace
