// A super frame taken as a whole: vector code against plain code, and both roads of the demuxer against each
// other where the plain decoder of the comparison tests does not look: listeners that throw, and mixed
// inputs.
#include "probe/CP_L1_ADC_TO_Channel.h"
#include "probe/NP_PSB_Raw_Data_Demuxer.h"
#include "probe/Super_Frame.h"

#include "Captured_Output.h"
#include "Demux_Streams.h"
#include "Recording_Listeners.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <memory>
#include <random>
#include <stdexcept>

namespace {

using namespace Pelgar::ORBE::demux;
using namespace Pelgar::ORBE::test;

constexpr std::size_t super_frame_bytes = 910;

// In memory of its own length, so that AddressSanitizer sees a byte too far.
Bytes random_super_frame(std::mt19937& random) {
    Bytes bytes = numbered_super_frames(13 * static_cast<std::uint32_t>(random() % 80'000), 1);
    for (std::size_t word = 0; word < super_frame_bytes / 2; ++word) {
        const auto noise = static_cast<std::uint16_t>(random());
        bytes[2 * word] = static_cast<std::uint8_t>(noise);
        bytes[2 * word + 1] = static_cast<std::uint8_t>((bytes[2 * word + 1] & 0xF8) | (noise >> 8 & 0x07));
    }
    return bytes;
}

TEST(Super_Frame, SortsAsThePlainCodeDoesFromAnyAddress) {
    std::mt19937 random(1);
    for (std::size_t offset = 0; offset < 64; ++offset) {
        Bytes bytes(offset);
        for (std::size_t i = 0; i < super_frame_bytes; ++i) {
            bytes.push_back(static_cast<std::uint8_t>(random()));
        }
        std::uint16_t channels[channel_count];
        std::uint16_t expected[channel_count];
        std::fill(std::begin(channels), std::end(channels), 0xFFFF);
        super_frame::sort_ap(bytes.data() + offset, channels);
        super_frame::plain::sort_ap(bytes.data() + offset, expected);
        EXPECT_TRUE(std::equal(std::begin(channels), std::end(channels), std::begin(expected)));
    }
}

TEST(Super_Frame, LooksAtTheTagOfEveryWordAndAtTheStartFlag) {
    std::mt19937 random(2);
    const Bytes healthy = random_super_frame(random);
    EXPECT_TRUE(super_frame::is_in_order(healthy.data()));
    EXPECT_TRUE(super_frame::plain::is_in_order(healthy.data()));
    for (std::size_t bit = 0; bit < 8 * super_frame_bytes; ++bit) {
        Bytes bytes = healthy;
        bytes[bit / 8] ^= static_cast<std::uint8_t>(1U << bit % 8);
        const bool is_tag = bit % 16 >= 12;
        const bool is_flag = bit == 11;
        EXPECT_EQ(super_frame::is_in_order(bytes.data()), !is_tag && !is_flag) << bit;
        EXPECT_EQ(super_frame::plain::is_in_order(bytes.data()), !is_tag && !is_flag) << bit;
    }
}

TEST(Super_Frame, CountersMustRunOnThroughAllFrames) {
    for (const std::uint32_t first : {0U, 13U, 1014U, 0xFFFF3U - 13U}) {
        const Bytes healthy = numbered_super_frames(first, 1);
        EXPECT_TRUE(super_frame::counts_on(healthy.data(), first));
        EXPECT_FALSE(super_frame::counts_on(healthy.data(), first + 1));
        for (std::size_t frame = 0; frame < 13; ++frame) {
            EXPECT_EQ(super_frame::frame_counter(healthy.data(), frame), first + frame);
            for (const std::size_t word : {27U, 34U}) {
                Bytes bytes = healthy;
                bytes[70 * frame + 2 * word] ^= 1;
                EXPECT_FALSE(super_frame::counts_on(bytes.data(), first)) << frame;
            }
        }
    }
}

// Hands super frames on, or has them come frame by frame.
class Frame_Wise_Stage : public I_L1_Demux_ADC_Results {
public:
    explicit Frame_Wise_Stage(I_L1_Demux_ADC_Results& next) : m_next(next) {}

    void publish_adc_data(const std::uint16_t (&adc)[adc_frame_length]) override {
        m_next.publish_adc_data(adc);
    }

    void reset_and_resync_counters() override { m_next.reset_and_resync_counters(); }

private:
    I_L1_Demux_ADC_Results& m_next;
};

// Records sets, throws now and then, and changes the values as a filter does.
class Throwing_Listener : public I_L2_Demux_CH_Results {
public:
    void publish_ap_ch_data(std::uint16_t (&values)[channel_count]) override { take(Band::AP, values); }

    void publish_lp_ch_data(std::uint16_t (&values)[channel_count]) override { take(Band::LFP, values); }

    std::vector<Channel_Set> sets;

private:
    void take(Band band, std::uint16_t (&values)[channel_count]) {
        Channel_Set& set = sets.emplace_back();
        set.band = band;
        std::copy(std::begin(values), std::end(values), set.values.begin());
        for (std::uint16_t& value : values) {
            value = static_cast<std::uint16_t>(3 * value + 1);
        }
        if (m_random() % 50 == 0) {
            throw std::runtime_error("listener");
        }
    }

    std::mt19937 m_random{7};
};

// One of the two roads, with everything that can be seen of it.
struct Road {
    explicit Road(bool whole) : demuxer(whole ? static_cast<I_L1_Demux_ADC_Results&>(stage) : frame_wise) {
        stage.set_l2_ch_result_listener(listener);
    }

    std::shared_ptr<Throwing_Listener> listener = std::make_shared<Throwing_Listener>();
    CP_L1_ADC_TO_Channel stage;
    Frame_Wise_Stage frame_wise{stage};
    NP_PSB_Raw_Data_Demuxer demuxer;
};

std::string feed(Road& road, const std::vector<Bytes>& blocks, const Words& words) {
    const auto output = captured_output([&] {
        for (const Bytes& block : blocks) {
            try {
                road.demuxer.feed_psb_raw_data_block_buffer(block.data(),
                                                            static_cast<unsigned>(block.size()));
            } catch (const std::runtime_error&) {
                continue;
            }
            if (road.stage.get_frame_count() % 5 == 0) {
                continue;
            }
            for (const std::uint16_t word : words) {
                road.demuxer.feed_psb_raw_data(word);
            }
        }
    });
    return output.out + "\n--\n" + output.err;
}

// A stage of a host's own.
class Frame_Counter : public CP_L1_ADC_TO_Channel {
public:
    void publish_adc_data(const std::uint16_t (&adc)[adc_frame_length]) override {
        ++frames;
        CP_L1_ADC_TO_Channel::publish_adc_data(adc);
    }

    unsigned frames = 0;
};

TEST(Super_Frame, DerivedStageGetsTheFramesOneByOne) {
    Frame_Counter stage;
    NP_PSB_Raw_Data_Demuxer demuxer(stage);
    const Bytes bytes = numbered_super_frames(0, 5);
    captured_output(
        [&] { demuxer.feed_psb_raw_data_block_buffer(bytes.data(), static_cast<unsigned>(bytes.size())); });
    EXPECT_EQ(stage.frames, 65U);
}

TEST(Super_Frame, BothRoadsLeaveTheSameBehind) {
    std::mt19937 random(3);
    std::uint32_t counter = 0xFFF00 / 13 * 13 - 13 * 40;
    std::vector<Bytes> blocks;
    for (int block = 0; block < 60; ++block) {
        Bytes bytes;
        for (std::size_t super_frame = 0; super_frame < 1 + random() % 12; ++super_frame) {
            const Bytes next = numbered_super_frames(counter % 0x100000, 1);
            bytes.insert(bytes.end(), next.begin(), next.end());
            counter += random() % 40 == 0 ? 26U : 13U;
        }
        if (random() % 4 == 0) {
            bytes[random() % bytes.size()] ^= 0xF0;
        }
        blocks.push_back(bytes);
    }
    // Sync bits that hold the pattern, then what follows it.
    Words words;
    for (const unsigned bits : {0x8000U, 0x0000U, 0x8000U, 0x0000U, 0x0000U}) {
        words.push_back(static_cast<std::uint16_t>(bits | (random() & 0x7FFF)));
    }
    for (int word = 0; word < 37; ++word) {
        words.push_back(static_cast<std::uint16_t>(random() & 0x7FFF));
    }

    for (const Words& between : {Words{}, words}) {
        Road whole(true);
        Road frame_wise(false);
        const std::string output = feed(whole, blocks, between);
        EXPECT_EQ(output, feed(frame_wise, blocks, between));
        EXPECT_TRUE(whole.listener->sets == frame_wise.listener->sets);
        EXPECT_GT(whole.listener->sets.size(), 100U);
        EXPECT_EQ(whole.stage.get_frame_count(), frame_wise.stage.get_frame_count());
        EXPECT_EQ(whole.demuxer.get_frame_count(), frame_wise.demuxer.get_frame_count());
        EXPECT_EQ(whole.demuxer.get_sync_pattern_count(), frame_wise.demuxer.get_sync_pattern_count());
    }
}

TEST(Super_Frame, TheStageTakesOnlyWhatRunsOn) {
    CP_L1_ADC_TO_Channel stage;
    const auto listener = std::make_shared<Recording_L2_Listener>();
    stage.set_l2_ch_result_listener(listener);
    EXPECT_TRUE(stage.publish_super_frame(numbered_super_frames(0, 1).data()));
    EXPECT_TRUE(stage.publish_super_frame(numbered_super_frames(13, 1).data()));
    EXPECT_FALSE(stage.publish_super_frame(numbered_super_frames(13, 1).data()));
    EXPECT_FALSE(stage.publish_super_frame(numbered_super_frames(27, 1).data()));
    EXPECT_FALSE(stage.publish_super_frame(numbered_super_frames(39, 1).data()));
    EXPECT_TRUE(stage.publish_super_frame(numbered_super_frames(26, 1).data()));
    EXPECT_EQ(listener->count(Band::AP), 3U);
    EXPECT_EQ(stage.get_frame_count(), 39U);
}

} // namespace
