// The probe ASIC's registers and shift registers, and devices with and without power.
#include "Probe_ASIC.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using namespace Pelgar::ORBE::test;

constexpr std::uint8_t status = 0x08;
constexpr std::uint8_t good = 0x80;

class ASIC : public testing::Test {
protected:
    void begin(std::size_t length) {
        m_asic.write(0x10, static_cast<std::uint8_t>(length % 256));
        m_asic.write(0x0F, static_cast<std::uint8_t>(length / 256));
    }

    void upload(std::uint8_t chain, std::size_t announced, const std::vector<std::uint8_t>& sent) {
        begin(announced);
        for (const std::uint8_t byte : sent) {
            m_asic.write(chain, byte);
        }
    }

    Probe_ASIC m_asic;
};

constexpr std::uint8_t even = Probe_ASIC::base_chain_of_even_channels;
constexpr std::uint8_t odd = Probe_ASIC::base_chain_of_odd_channels;
constexpr std::uint8_t shank = Probe_ASIC::shank_chain;

TEST_F(ASIC, ControlRegistersKeepWhatIsWrittenUntilThePowerGoes) {
    m_asic.write(0x00, 0x40);
    m_asic.write(0x01, 0xD0);
    EXPECT_EQ(m_asic.read(0x00), 0x40);
    EXPECT_EQ(m_asic.read(0x01), 0xD0);
    m_asic.lose_power();
    EXPECT_EQ(m_asic.read(0x00), 0);
    EXPECT_EQ(m_asic.read(0x01), 0);
}

TEST_F(ASIC, ChainsKeepEveryUploadInTheBitOrderOfTheImage) {
    upload(shank, 3, {0x01, 0x80, 0x0F});
    upload(shank, 2, {0xA0, 0x02});
    EXPECT_EQ(m_asic.uploads(shank),
              (std::vector<Probe_ASIC::Upload>{{3, {0x80, 0x01, 0xF0}}, {2, {0x05, 0x40}}}));
    EXPECT_EQ(m_asic.chain(shank), (std::vector<std::uint8_t>{0x05, 0x40}));
    EXPECT_EQ(m_asic.chain(even), std::vector<std::uint8_t>{});
    m_asic.lose_power();
    EXPECT_EQ(m_asic.uploads(shank), std::vector<Probe_ASIC::Upload>{});
}

TEST_F(ASIC, StatusIsGoodAfterTwoEqualUploadsOfTheRightLength) {
    const std::vector<std::uint8_t> bytes(306, 0x5A);
    EXPECT_EQ(m_asic.read(status), 0);
    upload(even, 306, bytes);
    EXPECT_EQ(m_asic.read(status), 0) << "one upload shifts nothing out that could be compared";
    upload(even, 306, bytes);
    EXPECT_EQ(m_asic.read(status), good);
    upload(odd, 306, bytes);
    EXPECT_EQ(m_asic.read(status), 0) << "each chain is judged by itself";
    upload(odd, 306, bytes);
    EXPECT_EQ(m_asic.read(status), good);
}

TEST_F(ASIC, StatusIsBadWhenTheUploadsDiffer) {
    std::vector<std::uint8_t> bytes(306, 0x5A);
    upload(even, 306, bytes);
    bytes[300] = 0x5B;
    upload(even, 306, bytes);
    EXPECT_EQ(m_asic.read(status), 0);
    upload(even, 306, bytes);
    EXPECT_EQ(m_asic.read(status), good) << "the last two agree";
}

TEST_F(ASIC, StatusIsBadWhenTheLengthIsWrong) {
    const std::vector<std::uint8_t> short_bytes(305, 1);
    upload(even, 305, short_bytes);
    upload(even, 305, short_bytes);
    EXPECT_EQ(m_asic.read(status), 0) << "announced and sent too few";
    upload(even, 306, short_bytes);
    upload(even, 306, short_bytes);
    EXPECT_EQ(m_asic.read(status), 0) << "sent fewer than announced";
    const std::vector<std::uint8_t> long_bytes(307, 1);
    upload(even, 306, long_bytes);
    upload(even, 306, long_bytes);
    EXPECT_EQ(m_asic.read(status), 0) << "sent more than announced";
    const std::vector<std::uint8_t> shank_bytes(121, 1);
    upload(shank, 121, shank_bytes);
    upload(shank, 121, shank_bytes);
    EXPECT_EQ(m_asic.read(status), good);
}

TEST(I2C_Device, EEPROMKeepsItsContentsWithoutPower) {
    I2C_Device eeprom(I2C_Device::Memory::kept, {{3, 7}});
    eeprom.write(4, 9);
    eeprom.lose_power();
    EXPECT_EQ(eeprom.read(3), 7);
    EXPECT_EQ(eeprom.read(4), 9);
}

TEST(I2C_Device, TextEndsWithAZero) {
    I2C_Device eeprom(I2C_Device::Memory::kept);
    eeprom.set(12, 0xFF);
    eeprom.set_text(10, "NP");
    EXPECT_EQ(eeprom.read(10), 'N');
    EXPECT_EQ(eeprom.read(11), 'P');
    EXPECT_EQ(eeprom.read(12), 0);
}

} // namespace
