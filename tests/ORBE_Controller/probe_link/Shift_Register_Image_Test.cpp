#include "probe_link/Shift_Register_Image.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace Pelgar::ORBE {
namespace {

using Image = Shift_Register_Image<3>;

std::vector<int> bytes_of(const Image& image) {
    return {image.bytes().begin(), image.bytes().end()};
}

TEST(Shift_Register_Image, Starts_Zeroed) {
    EXPECT_EQ(Image::size_in_bytes, 3U);
    EXPECT_EQ(bytes_of(Image{}), (std::vector<int>{0, 0, 0}));
}

TEST(Shift_Register_Image, Bit_Positions_Count_From_The_Least_Significant_Bit_Of_The_First_Byte) {
    Image image;
    image.set_bit(0, true);
    image.set_bit(9, true);
    image.set_bit(23, true);
    EXPECT_EQ(bytes_of(image), (std::vector<int>{0x01, 0x02, 0x80}));
    EXPECT_TRUE(image.bit(9));
    EXPECT_FALSE(image.bit(8));
}

TEST(Shift_Register_Image, Setting_A_Bit_Reports_How_It_Changed) {
    Image image;
    EXPECT_EQ(image.set_bit(13, false), 0);
    EXPECT_EQ(image.set_bit(13, true), 1);
    EXPECT_EQ(image.set_bit(13, true), 0);
    EXPECT_EQ(image.set_bit(13, false), -1);
    EXPECT_EQ(bytes_of(image), (std::vector<int>{0, 0, 0}));
}

TEST(Shift_Register_Image, Numbers_Are_Written_Least_Significant_Bit_First_And_Move_The_Position) {
    Image image;
    std::size_t position = 6;
    image.write_bits(position, 0b1101, 4);
    EXPECT_EQ(position, 10U);
    EXPECT_EQ(bytes_of(image), (std::vector<int>{0x40, 0x03, 0}));
    image.write_bits(position, 0, 0);
    EXPECT_EQ(position, 10U);
    image.write_bits(position, 0b101, 3);
    EXPECT_EQ(position, 13U);
    EXPECT_EQ(bytes_of(image), (std::vector<int>{0x40, 0x17, 0}));
}

TEST(Shift_Register_Image, A_Number_Overwrites_Its_Own_Bits_Only) {
    Image image;
    std::size_t position = 0;
    image.write_bits(position, 0xFFFFFF, 24);
    position = 5;
    image.write_bits(position, 0b00110, 5);
    EXPECT_EQ(bytes_of(image), (std::vector<int>{0xDF, 0xFC, 0xFF}));
}

TEST(Shift_Register_Image, Positions_Beyond_The_Chain_Throw) {
    Image image;
    EXPECT_THROW(image.set_bit(24, true), std::out_of_range);
    EXPECT_THROW(static_cast<void>(image.bit(24)), std::out_of_range);
    std::size_t position = 22;
    EXPECT_THROW(image.write_bits(position, 0, 3), std::out_of_range);
}

TEST(Reverse_Bits, Mirrors_Every_Byte) {
    for (int byte = 0; byte < 256; ++byte) {
        std::string digits;
        for (int rest = byte; digits.size() < 8; rest /= 2) {
            digits += rest % 2 != 0 ? '1' : '0';
        }
        EXPECT_EQ(reverse_bits(static_cast<std::uint8_t>(byte)), std::stoi(digits, nullptr, 2)) << byte;
    }
}

} // namespace
} // namespace Pelgar::ORBE
