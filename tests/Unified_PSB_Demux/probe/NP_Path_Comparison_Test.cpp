// The probe's road from blocks to channel sets against the plain reference decoder, on random data with
// faults.
#include "probe/CP_L1_ADC_TO_Channel.h"
#include "probe/NP_PSB_Raw_Data_Demuxer.h"

#include "Captured_Output.h"
#include "Demux_Streams.h"
#include "NP_Reference_Decoder.h"
#include "Recording_Listeners.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <random>

namespace {

using namespace Pelgar::ORBE::demux;
using namespace Pelgar::ORBE::test;

// Blocks of super frames with random samples, whose frame counter runs on but for gaps.
class Random_Blocks {
public:
    explicit Random_Blocks(std::uint32_t seed) : m_random(seed), m_counter(draw(0x100000)) {}

    std::uint32_t draw(std::uint32_t limit) { return static_cast<std::uint32_t>(m_random() % limit); }

    Bytes next(std::size_t super_frame_count) {
        Bytes bytes;
        for (std::size_t frame = 0; frame < 13 * super_frame_count; ++frame) {
            if (draw(60) == 0) {
                m_counter += draw(4) == 0 ? draw(0x100000) : draw(30);
            }
            Adc_Frame values = frame_with_counter(m_counter++);
            for (std::size_t i = 0; i < 33; ++i) {
                values[i] = static_cast<std::uint16_t>(draw(0x400));
            }
            append_words(bytes, psb_words(values, frame % 13 == 0));
        }
        for (std::size_t fault = draw(3); fault > 0; --fault) {
            bytes[2 * draw(static_cast<std::uint32_t>(bytes.size() / 2)) + 1] ^=
                static_cast<std::uint8_t>(draw(0x100));
        }
        if (draw(6) == 0) {
            bytes[910 * draw(static_cast<std::uint32_t>(super_frame_count)) + 1] &= 0xF7;
        }
        if (draw(10) == 0) {
            bytes.resize(bytes.size() - 1 - draw(909));
        }
        return bytes;
    }

private:
    std::mt19937 m_random;
    std::uint32_t m_counter;
};

class NP_Path_Comparison : public testing::TestWithParam<std::uint32_t> {};

TEST_P(NP_Path_Comparison, DeliversAndPrintsWhatTheReferenceDoes) {
    const auto listener = std::make_shared<Recording_L2_Listener>();
    CP_L1_ADC_TO_Channel stage;
    stage.set_l2_ch_result_listener(listener);
    NP_PSB_Raw_Data_Demuxer demuxer(stage);
    NP_Reference_Decoder reference;
    Random_Blocks blocks(GetParam());

    const auto output = captured_output([&] {
        for (int round = 0; round < 150; ++round) {
            const Bytes block = blocks.next(1 + blocks.draw(20));
            demuxer.feed_psb_raw_data_block_buffer(block.data(), static_cast<unsigned>(block.size()));
            reference.feed_block(block);
            if (blocks.draw(40) == 0) {
                stage.reset_and_resync_counters();
                reference.restart_counters();
            }
        }
    });

    EXPECT_GT(listener->count(Band::AP), 500U);
    EXPECT_GT(listener->count(Band::LFP), 20U);
    EXPECT_TRUE(listener->sets == reference.sets);
    EXPECT_EQ(output.out, reference.out);
    EXPECT_EQ(output.err, reference.err);
}

INSTANTIATE_TEST_SUITE_P(Seeds, NP_Path_Comparison, testing::Range(1U, 9U));

// A healthy stream through the wrap of the 20-bit frame counter.
TEST(NP_Path, HealthyStreamThroughTheWrapOfTheFrameCounter) {
    const auto listener = std::make_shared<Recording_L2_Listener>();
    CP_L1_ADC_TO_Channel stage;
    stage.set_l2_ch_result_listener(listener);
    NP_PSB_Raw_Data_Demuxer demuxer(stage);
    NP_Reference_Decoder reference;

    constexpr std::size_t super_frame_count = 400;
    constexpr std::uint32_t first = 0x100000 / 13 * 13 - 13 * 200;
    const Bytes block = numbered_super_frames(first, super_frame_count);
    const auto output = captured_output(
        [&] { demuxer.feed_psb_raw_data_block_buffer(block.data(), static_cast<unsigned>(block.size())); });
    reference.feed_block(block);

    EXPECT_EQ(listener->count(Band::AP), super_frame_count);
    EXPECT_TRUE(listener->sets == reference.sets);
    EXPECT_EQ(output.out, "frame_number rolled : 0, prev count : 1048575\n"
                          "Incrementing m_three_word_counter_high_part\n");
    EXPECT_EQ(output.err, reference.err);
}

} // namespace
