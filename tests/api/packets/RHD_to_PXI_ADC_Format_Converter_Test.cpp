#include "packets/RHD_to_PXI_ADC_Format_Converter.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <string>
#include <thread>

namespace {

using Pelgar::ORBE::demux::RHD_Frame;
using Pelgar::ORBE::npoe_adapter::RHD_to_PXI_ADC_Format_Converter;

class RHDConverter : public testing::Test {
protected:
    // Publishes a frame with this TTL word and answers the status that comes out, and what was printed.
    std::uint16_t status_for(std::uint32_t ttl) {
        RHD_Frame frame;
        frame.ttl_in = ttl;
        testing::internal::CaptureStdout();
        m_converter.publish_rhd_frame(frame);
        m_printed = testing::internal::GetCapturedStdout();
        std::int16_t samples[12];
        std::uint16_t status = 0;
        m_converter.read_sample_packet_to_buffer(samples, &status);
        return status;
    }

    RHD_to_PXI_ADC_Format_Converter m_converter;
    std::string m_printed;
};

TEST(RHDConverterConstruction, SaysSoAfterItsQueue) {
    testing::internal::CaptureStdout();
    const RHD_to_PXI_ADC_Format_Converter converter;
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "MT_RHD_PXI_Queue ctor \nRHD_to_PXI_ADC_Format_Converter ctor\n");
}

TEST_F(RHDConverter, AdcWordsBecomeTwosComplement) {
    RHD_Frame frame;
    frame.board_adc_data = {0, 0xFFFF, 32768, 1, 2, 3, 4, 40000};
    m_converter.publish_rhd_frame(frame);
    std::array<std::int16_t, 12> samples;
    samples.fill(77);
    std::uint16_t status = 77;
    m_converter.read_sample_packet_to_buffer(samples.data(), &status);
    EXPECT_EQ(samples, (std::array<std::int16_t, 12>{-32768, 32767, 0, -32767, -32766, -32765, -32764, 7232,
                                                     0, 0, 0, 0}));
    EXPECT_EQ(status, 0);
    EXPECT_EQ(m_converter.queue().size(), 0U);
}

TEST_F(RHDConverter, TtlChangeIsFlaggedAndPrintedOnce) {
    EXPECT_EQ(status_for(0x00000300), 0x00C0);
    EXPECT_EQ(m_printed, "TTL input value change in RHD Frame : 300\n");
    EXPECT_EQ(status_for(0x00000300), 0x0080);
    EXPECT_EQ(m_printed, "");
    EXPECT_EQ(status_for(0), 0x0040);
    EXPECT_EQ(m_printed, "TTL input value change in RHD Frame : 0\n");
}

TEST_F(RHDConverter, StatusKeepsTheSixteenLowBits) {
    EXPECT_EQ(status_for(0x0000FF00), static_cast<std::uint16_t>((0x00FEU | 1U) << 6U));
    EXPECT_EQ(status_for(0xABCDEF12), static_cast<std::uint16_t>((0xCDEEU | 1U) << 6U));
    EXPECT_EQ(m_printed, "TTL input value change in RHD Frame : abcdef12\n");
}

TEST_F(RHDConverter, UpperTtlBitsCountAsAChangeOnEveryFrame) {
    for (int frame = 0; frame < 3; ++frame) {
        EXPECT_EQ(status_for(0x00010200), static_cast<std::uint16_t>((0x0102U | 1U) << 6U));
        EXPECT_EQ(m_printed, "TTL input value change in RHD Frame : 10200\n");
    }
}

TEST_F(RHDConverter, LastTtlWordOutlivesTheConverter) {
    EXPECT_EQ(status_for(0x0300), 0x00C0);
    RHD_to_PXI_ADC_Format_Converter next;
    RHD_Frame frame;
    frame.ttl_in = 0x0300;
    next.publish_rhd_frame(frame);
    std::uint16_t status = 0;
    next.read_sample_packet_to_buffer(nullptr, &status);
    EXPECT_EQ(status, 0x0080);
}

TEST_F(RHDConverter, ReadAfterExitWritesNothingAndSaysSo) {
    RHD_Frame frame;
    m_converter.publish_rhd_frame(frame);
    m_converter.queue().signal_exit();
    std::array<std::int16_t, 12> samples;
    samples.fill(77);
    std::uint16_t status = 77;
    testing::internal::CaptureStdout();
    m_converter.read_sample_packet_to_buffer(samples.data(), &status);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "RHD_to_PXI_ADC_Format_Converter::read_sample_packet_to_buffer signalled for exit\n");
    EXPECT_EQ(samples[0], 77);
    EXPECT_EQ(status, 77);
    EXPECT_EQ(m_converter.queue().size(), 1U);
}

TEST_F(RHDConverter, BlockedReadWakesOnExit) {
    std::thread reader([&] { m_converter.read_sample_packet_to_buffer(nullptr, nullptr); });
    m_converter.queue().signal_exit();
    reader.join();
    EXPECT_TRUE(m_converter.queue().signalled_for_exit());
}

} // namespace
