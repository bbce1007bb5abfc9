#include "SPI_Flash_Model.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace {

using Pelgar::ORBE::test::SPI_Flash_Model;
using Bytes = std::vector<std::uint8_t>;
using Transaction = SPI_Flash_Model::Transaction;

class FlashModel : public testing::Test {
protected:
    FlashModel() { m_flash.set_busy_reads(0, 0); }

    // What comes back for each of the bytes.
    Bytes transact(const Bytes& bytes) {
        Bytes answer;
        m_flash.select();
        for (const std::uint8_t byte : bytes) {
            answer.push_back(m_flash.exchange(byte));
        }
        m_flash.deselect();
        return answer;
    }

    std::uint8_t status() { return transact({0x05, 0}).at(1); }

    void enable_writing() { transact({0x06}); }

    SPI_Flash_Model m_flash;
};

TEST_F(FlashModel, IsErasedAtFirst) {
    EXPECT_EQ(m_flash.byte_at(0), 0xFF);
    EXPECT_EQ(m_flash.bytes(0xFF'FFFE, 2), (Bytes{0xFF, 0xFF}));
    EXPECT_EQ(status(), 0x00);
    EXPECT_EQ(transact({0x70, 0}), (Bytes{0xFF, 0x80}));
}

TEST_F(FlashModel, Identifies) {
    EXPECT_EQ(transact({0x9F, 0, 0, 0, 0}), (Bytes{0xFF, 0x20, 0xBA, 0x18, 0x00}));
}

TEST_F(FlashModel, NothingHappensWhileItIsNotSelected) {
    EXPECT_EQ(m_flash.exchange(0x06), 0xFF);
    m_flash.deselect();
    EXPECT_FALSE(m_flash.is_write_enabled());
    EXPECT_TRUE(m_flash.transactions().empty());
}

TEST_F(FlashModel, ReadsOnFromAnAddressAndAroundTheEnd) {
    m_flash.put(0xFF'FFFE, {1, 2});
    m_flash.put(0, {3});
    EXPECT_EQ(transact({0x03, 0xFF, 0xFF, 0xFE, 0, 0, 0}), (Bytes{0xFF, 0xFF, 0xFF, 0xFF, 1, 2, 3}));
    EXPECT_EQ(m_flash.transactions(), (std::vector<Transaction>{{0x03, 0xFFFFFE, 3, false}}));
}

TEST_F(FlashModel, WriteEnableIsLatchedUntilTheNextWrite) {
    EXPECT_EQ(status(), 0x00);
    enable_writing();
    EXPECT_EQ(status(), 0x02);
    transact({0x02, 0, 0, 0, 0x5A});
    EXPECT_EQ(status(), 0x00);
}

TEST_F(FlashModel, WithoutWriteEnableNothingIsChanged) {
    m_flash.put(0x10, {0x42});
    transact({0x02, 0, 0, 0x10, 0x00});
    transact({0xD8, 0, 0, 0});
    transact({0xC7});
    EXPECT_EQ(m_flash.byte_at(0x10), 0x42);
    EXPECT_EQ(m_flash.transactions(),
              (std::vector<Transaction>{{0x02, 0x10, 1, true}, {0xD8, 0, 0, true}, {0xC7, 0, 0, true}}));
}

TEST_F(FlashModel, PageIsWrittenWhenTheFlashIsDeselected) {
    enable_writing();
    m_flash.select();
    for (const std::uint8_t byte : Bytes{0x02, 0x12, 0x34, 0x00, 7, 8}) {
        m_flash.exchange(byte);
    }
    EXPECT_EQ(m_flash.bytes(0x12'3400, 2), (Bytes{0xFF, 0xFF}));
    m_flash.deselect();
    EXPECT_EQ(m_flash.bytes(0x12'3400, 3), (Bytes{7, 8, 0xFF}));
    EXPECT_EQ(m_flash.transactions().back(), (Transaction{0x02, 0x12'3400, 2, false}));
}

TEST_F(FlashModel, ProgrammingOnlyClearsBits) {
    m_flash.put(0, {0xF0, 0x0F});
    enable_writing();
    transact({0x02, 0, 0, 0, 0x3C, 0xFF});
    EXPECT_EQ(m_flash.bytes(0, 2), (Bytes{0x30, 0x0F}));
}

TEST_F(FlashModel, ProgrammingWrapsInsideThePage) {
    enable_writing();
    transact({0x02, 0, 0x01, 0xFE, 1, 2, 3});
    EXPECT_EQ(m_flash.bytes(0x1FE, 3), (Bytes{1, 2, 0xFF}));
    EXPECT_EQ(m_flash.byte_at(0x100), 3);
}

TEST_F(FlashModel, OfMoreThanAPageTheLastBytesCount) {
    enable_writing();
    Bytes bytes{0x02, 0, 0, 0};
    bytes.insert(bytes.end(), 256, 0x00);
    bytes.insert(bytes.end(), {0xAA, 0xBB});
    transact(bytes);
    EXPECT_EQ(m_flash.bytes(0, 3), (Bytes{0xAA, 0xBB, 0x00}));
}

TEST_F(FlashModel, PageWithoutDataChangesNothingAndLeavesTheLatch) {
    enable_writing();
    transact({0x02, 0, 0, 0});
    EXPECT_EQ(status(), 0x02);
    EXPECT_TRUE(m_flash.transactions().back().ignored);
}

TEST_F(FlashModel, SectorEraseErasesTheSectorAroundItsAddress) {
    m_flash.put(0x1'FFFF, {1, 2});
    m_flash.put(0x2'FFFF, {3, 4});
    enable_writing();
    transact({0xD8, 0x02, 0x80, 0x01});
    EXPECT_EQ(m_flash.bytes(0x1'FFFF, 2), (Bytes{1, 0xFF}));
    EXPECT_EQ(m_flash.bytes(0x2'FFFF, 2), (Bytes{0xFF, 4}));
}

TEST_F(FlashModel, BulkEraseErasesEverything) {
    m_flash.put(0, {1});
    m_flash.put(0xFF'0000, {2});
    enable_writing();
    transact({0xC7});
    EXPECT_EQ(m_flash.byte_at(0), 0xFF);
    EXPECT_EQ(m_flash.byte_at(0xFF'0000), 0xFF);
}

TEST_F(FlashModel, CommandsOfTheWrongLengthAreIgnored) {
    m_flash.put(0, {1});
    transact({0x06, 0});
    EXPECT_EQ(status(), 0x00);
    enable_writing();
    transact({0xD8, 0, 0});
    transact({0xD8, 0, 0, 0, 0});
    transact({0xC7, 0});
    EXPECT_EQ(m_flash.byte_at(0), 1);
    EXPECT_EQ(status(), 0x02);
}

TEST_F(FlashModel, BusyForSoManyReadsOfTheStatus) {
    m_flash.set_busy_reads(3, 1);
    enable_writing();
    transact({0xD8, 0, 0, 0});
    EXPECT_EQ(transact({0x70, 0}).at(1), 0x00);
    EXPECT_EQ(status(), 0x01);
    EXPECT_EQ(transact({0x05, 0, 0, 0}), (Bytes{0xFF, 0x01, 0x01, 0x00})) << "a byte a read";
    EXPECT_EQ(transact({0x70, 0}).at(1), 0x80);
    enable_writing();
    transact({0x02, 0, 0, 0, 0});
    EXPECT_EQ(status(), 0x01);
    EXPECT_EQ(status(), 0x00);
    EXPECT_EQ(m_flash.status_reads(), 6U);
}

TEST_F(FlashModel, BusyFlashAnswersForItsStatusOnly) {
    m_flash.put(0, {1});
    m_flash.make_busy(100);
    enable_writing();
    EXPECT_FALSE(m_flash.is_write_enabled());
    EXPECT_EQ(transact({0x03, 0, 0, 0, 0}).at(4), 0xFF);
    EXPECT_EQ(transact({0x9F, 0}).at(1), 0xFF);
    for (const Transaction& transaction : m_flash.transactions()) {
        EXPECT_TRUE(transaction.ignored);
    }
}

TEST_F(FlashModel, BusyBitMayStick) {
    m_flash.let_busy_stick();
    EXPECT_EQ(status(), 0x00) << "it has not been busy yet";
    m_flash.make_busy(1);
    for (int i = 0; i < 1000; ++i) {
        ASSERT_EQ(status(), 0x01);
    }
}

} // namespace
