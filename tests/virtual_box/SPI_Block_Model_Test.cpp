#include "SPI_Block_Model.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <vector>

namespace {

using Pelgar::ORBE::test::SPI_Block_Model;
using Bytes = std::vector<std::uint8_t>;

constexpr std::uint32_t load = 0x186;
constexpr std::uint32_t run = 0x86;
constexpr std::uint32_t both_empty = 0x5;

class SPIBlock : public testing::Test {
protected:
    std::optional<std::uint32_t> status() { return m_block.read(SPI_Block_Model::status); }

    std::optional<std::uint32_t> receive() { return m_block.read(SPI_Block_Model::receive); }

    void fill(const Bytes& bytes) {
        for (const std::uint8_t byte : bytes) {
            m_block.write(SPI_Block_Model::transmit, byte);
        }
    }

    void start(const Bytes& bytes) {
        m_block.write(SPI_Block_Model::slave_select, 0);
        m_block.write(SPI_Block_Model::control, load);
        fill(bytes);
        m_block.write(SPI_Block_Model::control, run);
    }

    SPI_Block_Model m_block;
};

TEST_F(SPIBlock, FifosAreEmptyAtFirst) {
    EXPECT_EQ(status(), both_empty);
    EXPECT_EQ(receive(), 0U);
    EXPECT_EQ(m_block.reads_of_nothing(), 1U);
}

TEST_F(SPIBlock, OtherRegistersAreNotItsOwn) {
    EXPECT_EQ(m_block.read(0x0500), std::nullopt);
    EXPECT_EQ(m_block.read(SPI_Block_Model::control), std::nullopt);
    m_block.write(0x0500, 7);
    EXPECT_EQ(status(), both_empty);
}

TEST_F(SPIBlock, InhibitedTransferWaitsInTheFifo) {
    m_block.write(SPI_Block_Model::slave_select, 0);
    m_block.write(SPI_Block_Model::control, load);
    fill({0x9F, 0, 0, 0});
    EXPECT_EQ(status(), 0x1U);
    m_block.write(SPI_Block_Model::control, run);
    EXPECT_EQ(status(), 0x4U);
    EXPECT_EQ(receive(), 0xFFU);
    EXPECT_EQ(receive(), 0x20U);
    EXPECT_EQ(receive(), 0xBAU);
    EXPECT_EQ(receive(), 0x18U);
    EXPECT_EQ(status(), both_empty);
}

TEST_F(SPIBlock, BytesGoOutAtOnceWhenTheTransferIsNotInhibited) {
    m_block.write(SPI_Block_Model::slave_select, 0);
    m_block.write(SPI_Block_Model::control, run);
    fill({0x06});
    m_block.write(SPI_Block_Model::slave_select, 1);
    EXPECT_TRUE(m_block.flash().is_write_enabled());
}

TEST_F(SPIBlock, EveryBitOfTheControlIsNeeded) {
    for (const std::uint32_t control : {0x84U, 0x82U, 0x06U}) {
        m_block.reset();
        m_block.write(SPI_Block_Model::control, control);
        fill({0x06});
        EXPECT_EQ(status(), 0x1U) << control;
    }
}

TEST_F(SPIBlock, FlashThatIsNotSelectedDoesNotListen) {
    m_block.write(SPI_Block_Model::slave_select, 1);
    m_block.write(SPI_Block_Model::control, run);
    fill({0x06});
    EXPECT_EQ(receive(), 0xFFU);
    EXPECT_FALSE(m_block.flash().is_write_enabled());
}

TEST_F(SPIBlock, FlashActsWhenItIsDeselected) {
    start({0x06});
    EXPECT_FALSE(m_block.flash().is_write_enabled());
    m_block.write(SPI_Block_Model::slave_select, 1);
    EXPECT_TRUE(m_block.flash().is_write_enabled());
}

TEST_F(SPIBlock, SeventeenthByteIsLost) {
    m_block.write(SPI_Block_Model::control, load);
    fill(Bytes(16));
    EXPECT_EQ(status(), 0x9U);
    EXPECT_EQ(m_block.lost_bytes(), 0U);
    fill({1});
    EXPECT_EQ(m_block.lost_bytes(), 1U);
    m_block.write(SPI_Block_Model::control, run);
    EXPECT_EQ(status(), 0x6U);
    fill({1});
    EXPECT_EQ(m_block.lost_bytes(), 2U) << "the receive FIFO is full as well";
}

TEST_F(SPIBlock, TransmitFifoMayDrainLateOrNever) {
    m_block.transmit_empty_at_look(3);
    for (int i = 0; i < 2; ++i) {
        start({0x06});
        EXPECT_EQ(status(), 0x0U);
        EXPECT_EQ(status(), 0x0U);
        EXPECT_EQ(status(), 0x4U);
        receive();
    }
    m_block.transmit_empty_at_look(std::nullopt);
    start({0x06});
    for (int i = 0; i < 100; ++i) {
        EXPECT_EQ(status(), 0x0U);
    }
}

TEST_F(SPIBlock, ReceiveFifoMayHoldMoreThanItShouldOrNeverEmpty) {
    m_block.add_extra_bytes(2);
    start({0x06});
    receive();
    EXPECT_EQ(status(), 0x4U);
    EXPECT_EQ(receive(), 0xFFU);
    EXPECT_EQ(receive(), 0xFFU);
    EXPECT_EQ(status(), both_empty);
    start({0x06});
    receive();
    EXPECT_EQ(status(), both_empty) << "once only";
    m_block.let_receive_fifo_stick(true);
    EXPECT_EQ(status(), 0x4U);
    m_block.let_receive_fifo_stick(false);
    EXPECT_EQ(status(), both_empty);
}

TEST_F(SPIBlock, ResetKeepsTheFlashAndEndsItsTransaction) {
    start({0x06, 0});
    m_block.flash().put(0, {1});
    m_block.reset();
    EXPECT_EQ(status(), both_empty);
    EXPECT_EQ(m_block.flash().byte_at(0), 1);
    EXPECT_EQ(m_block.flash().transactions().size(), 1U);
}

} // namespace
