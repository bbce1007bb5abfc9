#include "probe/NP_PSB_Raw_Data_Demuxer.h"

#include "Captured_Output.h"
#include "Demux_Streams.h"
#include "Recording_Listeners.h"

#include <gtest/gtest.h>

#include <array>
#include <sstream>
#include <string>
#include <vector>

namespace {

using namespace Pelgar::ORBE::demux;
using namespace Pelgar::ORBE::test;

class Block_Input : public testing::Test {
protected:
    Captured_Output feed(const Bytes& bytes) {
        return captured_output([&] {
            m_demuxer.feed_psb_raw_data_block_buffer(bytes.data(), static_cast<unsigned>(bytes.size()));
        });
    }

    Recording_L1_Stage m_stage;
    NP_PSB_Raw_Data_Demuxer m_demuxer{m_stage};
};

TEST_F(Block_Input, TooSmallABlockIsRejected) {
    for (const std::size_t size : {0U, 1U, 14U, 909U}) {
        const auto output = feed(Bytes(size));
        EXPECT_EQ(output.err, "Buffer size should contain at least (13 * 35) = 455 words\n") << size;
        EXPECT_EQ(output.out, "");
    }
    EXPECT_TRUE(m_stage.frames.empty());
}

TEST_F(Block_Input, ABlockThatIsNotWholeSuperFramesIsRejectedWhole) {
    for (const std::size_t size : {911U, 1819U, 1821U}) {
        Bytes bytes = numbered_super_frames(0, 3);
        bytes.resize(size);
        const auto output = feed(bytes);
        EXPECT_EQ(output.err, "Buffer size should divisible with 455 words\n") << size;
        EXPECT_EQ(output.out, "");
    }
    EXPECT_TRUE(m_stage.frames.empty());
}

TEST_F(Block_Input, OneSuperFrameGivesThirteenFrames) {
    const auto output = feed(numbered_super_frames(0, 1));
    EXPECT_EQ(output.err, "");
    EXPECT_EQ(output.out, "");
    EXPECT_EQ(m_stage.frames.size(), 13U);
}

TEST_F(Block_Input, EveryValueOfEveryFrameIsInItsPlace) {
    feed(numbered_super_frames(26, 3));
    ASSERT_EQ(m_stage.frames.size(), 39U);
    for (std::uint32_t frame = 0; frame < 39; ++frame) {
        EXPECT_EQ(m_stage.frames[frame], numbered_frame(26 + frame)) << frame;
    }
}

TEST_F(Block_Input, AWordOfLaneKInRowRIsValue5KPlusR) {
    for (std::size_t row = 0; row < 5; ++row) {
        for (std::size_t lane = 0; lane < 7; ++lane) {
            Bytes bytes = numbered_super_frames(0, 1);
            Words words;
            for (std::size_t i = 0; i < 35; ++i) {
                words.push_back(static_cast<std::uint16_t>((i % 7 + 1) << 12));
            }
            words[0] |= 0x0800;
            words[7 * row + lane] |= 0x2A5;
            Bytes first_frame;
            append_words(first_frame, words);
            std::copy(first_frame.begin(), first_frame.end(), bytes.begin());
            m_stage.frames.clear();
            EXPECT_EQ(feed(bytes).err, "");
            Adc_Frame expected{};
            expected[5 * lane + row] = 0x2A5;
            EXPECT_EQ(m_stage.frames.at(0), expected);
        }
    }
}

TEST_F(Block_Input, Bits10And11AreNoPartOfAValue) {
    Bytes bytes = numbered_super_frames(0, 1);
    for (std::size_t i = 1; i < bytes.size(); i += 2) {
        bytes[i] |= 0x0C;
    }
    EXPECT_EQ(feed(bytes).err, "");
    EXPECT_EQ(m_stage.frames.at(7), numbered_frame(7));
}

TEST_F(Block_Input, AMissingStartFlagStopsTheBlockThere) {
    Bytes bytes = numbered_super_frames(0, 4);
    bytes[2 * 910 + 1] &= 0xF7;
    const auto output = feed(bytes);
    EXPECT_EQ(output.err, "Super frame align failure\n");
    EXPECT_EQ(output.out, "");
    EXPECT_EQ(m_stage.frames.size(), 26U);
}

TEST_F(Block_Input, AMissingStartFlagInFrontDropsTheWholeBlock) {
    Bytes bytes = numbered_super_frames(0, 4);
    bytes[1] &= 0xF7;
    EXPECT_EQ(feed(bytes).err, "Super frame align failure\n");
    EXPECT_TRUE(m_stage.frames.empty());
}

TEST_F(Block_Input, AWrongTagIsReportedOnceAWordAndTheWordIsUsed) {
    for (std::size_t word = 0; word < 455; ++word) {
        Bytes bytes = numbered_super_frames(0, 1);
        bytes[2 * word + 1] ^= 0x80;
        m_stage.frames.clear();
        const auto output = feed(bytes);
        ASSERT_EQ(output.err, "Warning shift reg mismatch\n") << word;
        ASSERT_EQ(output.out, "");
        ASSERT_EQ(m_stage.frames.size(), 13U);
        for (std::uint32_t frame = 0; frame < 13; ++frame) {
            ASSERT_EQ(m_stage.frames[frame], numbered_frame(frame));
        }
    }
}

TEST_F(Block_Input, EveryWrongTagOfAFrameIsReported) {
    Bytes bytes = numbered_super_frames(0, 1);
    bytes[1] ^= 0x10;
    bytes[2 * 9 + 1] ^= 0x40;
    bytes[2 * 40 + 1] &= 0x0F;
    EXPECT_EQ(feed(bytes).err,
              "Warning shift reg mismatch\nWarning shift reg mismatch\nWarning shift reg mismatch\n");
}

TEST_F(Block_Input, CountsNoSyncPatternsAndNoSerialFrames) {
    feed(numbered_super_frames(0, 2));
    EXPECT_EQ(m_demuxer.get_sync_pattern_count(), 0U);
    EXPECT_EQ(m_demuxer.get_frame_count(), 0U);
}

TEST_F(Block_Input, ResetSyncHasNoEffect) {
    m_demuxer.reset_sync();
    feed(numbered_super_frames(0, 1));
    m_demuxer.reset_sync();
    const auto output = feed(numbered_super_frames(13, 1));
    EXPECT_EQ(output.out, "");
    EXPECT_EQ(output.err, "");
    EXPECT_EQ(m_stage.frames.size(), 26U);
}

TEST_F(Block_Input, ABlockAtAnOddAddressIsRead) {
    const Bytes super_frame = numbered_super_frames(0, 1);
    Bytes shifted(1);
    shifted.insert(shifted.end(), super_frame.begin(), super_frame.end());
    m_demuxer.feed_psb_raw_data_block_buffer(shifted.data() + 1, 910);
    EXPECT_EQ(m_stage.frames.at(12), numbered_frame(12));
}

// The word-serial input: a word is the sync bit and two bits of each of the seven lanes. A column of ten bits
// a lane is complete with every fifth word.
class Serial_Input : public testing::Test {
protected:
    using Lanes = std::array<unsigned, 7>;

    static unsigned short serial_word(unsigned sync_bit, const Lanes& pairs) {
        unsigned word = sync_bit << 15;
        for (std::size_t lane = 0; lane < 7; ++lane) {
            word |= pairs[lane] << (12 - 2 * lane);
        }
        return static_cast<unsigned short>(word);
    }

    Captured_Output feed(const std::vector<unsigned short>& words) {
        return captured_output([&] {
            for (const unsigned short word : words) {
                m_demuxer.feed_psb_raw_data(word);
            }
        });
    }

    // The five words that bring a column, most significant pairs first. `sync_bits` holds their sync bits,
    // the first word's uppermost.
    static void append_column(std::vector<unsigned short>& words, const Lanes& values, unsigned sync_bits) {
        for (unsigned beat = 0; beat < 5; ++beat) {
            Lanes pairs{};
            for (std::size_t lane = 0; lane < 7; ++lane) {
                pairs[lane] = (values[lane] >> (8 - 2 * beat)) & 3U;
            }
            words.push_back(serial_word((sync_bits >> (4 - beat)) & 1U, pairs));
        }
    }

    // The five minor frames of a frame's values; the first one ends with the sync pattern.
    static std::vector<unsigned short> columns_of(const Adc_Frame& frame) {
        std::vector<unsigned short> words;
        for (std::size_t column = 0; column < 5; ++column) {
            Lanes values{};
            for (std::size_t lane = 0; lane < 7; ++lane) {
                values[lane] = frame[5 * lane + column];
            }
            append_column(words, values, column == 0 ? 0x14U : 0x00U);
        }
        return words;
    }

    static std::vector<unsigned short> whole_frame(const Adc_Frame& frame, const Lanes& closing = {}) {
        std::vector<unsigned short> words = columns_of(frame);
        append_column(words, closing, 0);
        return words;
    }

    Recording_L1_Stage m_stage;
    NP_PSB_Raw_Data_Demuxer m_demuxer{m_stage};
};

TEST_F(Serial_Input, NothingIsPublishedBeforeTheFirstSyncPattern) {
    std::vector<unsigned short> words;
    for (int i = 0; i < 60; ++i) {
        append_column(words, {1, 2, 3, 4, 5, 6, 7}, 0x00);
    }
    const auto output = feed(words);
    EXPECT_EQ(output.out, "");
    EXPECT_EQ(output.err, "");
    EXPECT_TRUE(m_stage.frames.empty());
    EXPECT_EQ(m_demuxer.get_sync_pattern_count(), 0U);
}

TEST_F(Serial_Input, FirstPatternAcquiresSyncAndTheFrameFollows) {
    const auto output = feed(whole_frame(numbered_frame(3)));
    EXPECT_EQ(output.out, "Initial PSB Frame sync aquired\n");
    EXPECT_EQ(output.err, "");
    ASSERT_EQ(m_stage.frames.size(), 1U);
    EXPECT_EQ(m_stage.frames[0], numbered_frame(3));
    EXPECT_EQ(m_demuxer.get_sync_pattern_count(), 1U);
}

TEST_F(Serial_Input, TheFrameIsPublishedWithTheLastBeatOfItsFifthColumn) {
    std::vector<unsigned short> words = columns_of(numbered_frame(9));
    const unsigned short last = words.back();
    words.pop_back();
    feed(words);
    EXPECT_TRUE(m_stage.frames.empty());
    feed({last});
    ASSERT_EQ(m_stage.frames.size(), 1U);
    EXPECT_EQ(m_stage.frames[0], numbered_frame(9));
    EXPECT_EQ(m_demuxer.get_frame_count(), 0U);
}

TEST_F(Serial_Input, AFrameIsCountedWithItsClosingColumn) {
    feed(whole_frame(numbered_frame(9)));
    EXPECT_EQ(m_demuxer.get_frame_count(), 1U);
}

TEST_F(Serial_Input, LaterPatternsInStepAreSilentAndCounted) {
    feed(whole_frame(numbered_frame(0)));
    for (std::uint32_t frame = 1; frame < 20; ++frame) {
        const auto output = feed(whole_frame(numbered_frame(frame)));
        EXPECT_EQ(output.out, "");
        EXPECT_EQ(output.err, "");
        EXPECT_EQ(m_stage.frames.back(), numbered_frame(frame));
    }
    EXPECT_EQ(m_stage.frames.size(), 20U);
    EXPECT_EQ(m_demuxer.get_sync_pattern_count(), 20U);
    EXPECT_EQ(m_demuxer.get_frame_count(), 20U);
}

TEST_F(Serial_Input, FramesRunOnWithoutFurtherPatterns) {
    feed(whole_frame(numbered_frame(0)));
    std::vector<unsigned short> words = whole_frame(numbered_frame(1));
    for (unsigned short& word : words) {
        word &= 0x7FFF;
    }
    feed(words);
    EXPECT_EQ(m_stage.frames.size(), 2U);
    EXPECT_EQ(m_demuxer.get_sync_pattern_count(), 1U);
}

TEST_F(Serial_Input, APatternInAnotherMinorFrameRealignsIt) {
    feed(whole_frame(numbered_frame(0)));
    std::vector<unsigned short> words = columns_of(numbered_frame(1));
    words.resize(10);
    feed(words);
    const auto output = feed(whole_frame(numbered_frame(2)));
    EXPECT_EQ(output.out, "Resync_1\n");
    EXPECT_EQ(output.err, "");
    EXPECT_EQ(m_stage.frames.back(), numbered_frame(2));
    EXPECT_EQ(m_stage.frames.size(), 2U);
}

TEST_F(Serial_Input, APatternOnAnotherBeatRealignsBoth) {
    feed(whole_frame(numbered_frame(0)));
    feed({0, 0});
    const auto output = feed(whole_frame(numbered_frame(2)));
    EXPECT_EQ(output.out, "Resync_1\nResync_2\n");
    EXPECT_EQ(m_stage.frames.back(), numbered_frame(2));
}

// A pattern that begins with the last word of a frame ends on the beat before the first column is complete,
// where the minor frame still is 0.
TEST_F(Serial_Input, APatternOneBeatEarlyRealignsTheBeatAlone) {
    std::vector<unsigned short> words = whole_frame(numbered_frame(0));
    words.back() |= 0x8000;
    feed(words);
    const auto output = feed({0x0000, 0x8000, 0x0000, 0x0000});
    EXPECT_EQ(output.out, "Resync_2\n");
    EXPECT_EQ(output.err, "");
}

TEST_F(Serial_Input, ThePatternIsTheLowFiveOfTheLastSyncBits) {
    std::vector<unsigned short> words(3, 0x8000);
    for (const unsigned sync_bit : {1U, 0U, 1U, 0U}) {
        words.push_back(static_cast<unsigned short>(sync_bit << 15));
    }
    EXPECT_EQ(feed(words).out, "");
    EXPECT_EQ(feed({0}).out, "Initial PSB Frame sync aquired\n");
}

TEST_F(Serial_Input, ANonZeroClosingColumnIsReportedOnceAndNotStored) {
    const auto output = feed(whole_frame(numbered_frame(5), {0, 0x200, 1, 1, 1, 1, 1}));
    EXPECT_EQ(output.err, "not zero beat on frame 5\n");
    EXPECT_EQ(output.out, "Initial PSB Frame sync aquired\n");
    EXPECT_EQ(m_stage.frames.size(), 1U);
    EXPECT_EQ(m_demuxer.get_frame_count(), 1U);
    feed(whole_frame(numbered_frame(6)));
    EXPECT_EQ(m_stage.frames.back(), numbered_frame(6));
}

TEST_F(Serial_Input, EveryLaneOfTheClosingColumnIsLookedAt) {
    feed(whole_frame(numbered_frame(0)));
    for (std::size_t lane = 0; lane < 7; ++lane) {
        Lanes closing{};
        closing[lane] = 1;
        EXPECT_EQ(feed(whole_frame(numbered_frame(1), closing)).err, "not zero beat on frame 5\n") << lane;
    }
}

TEST_F(Serial_Input, AnAnomalySourceAddsItsReadPosition) {
    std::istringstream source("0123456789");
    source.seekg(7);
    m_demuxer.set_anomaly_source(&source);
    const auto output = feed(whole_frame(numbered_frame(5), {0, 0, 0, 0, 0, 3, 3}));
    EXPECT_EQ(output.err, "not zero beat on frame 5\n");
    EXPECT_EQ(output.out, "Initial PSB Frame sync aquired\nAnomaly at pos : 7\n");
    m_demuxer.set_anomaly_source(nullptr);
    EXPECT_EQ(feed(whole_frame(numbered_frame(6), {1, 0, 0, 0, 0, 0, 0})).out, "");
}

TEST_F(Serial_Input, ResetSyncStopsPublishingUntilTheNextPattern) {
    feed(whole_frame(numbered_frame(0)));
    m_demuxer.reset_sync();
    std::vector<unsigned short> unsynchronised = whole_frame(numbered_frame(1));
    for (unsigned short& word : unsynchronised) {
        word &= 0x7FFF;
    }
    EXPECT_EQ(feed(unsynchronised).out, "");
    EXPECT_EQ(m_stage.frames.size(), 1U);
    const auto output = feed(whole_frame(numbered_frame(2)));
    EXPECT_EQ(output.out, "Initial PSB Frame sync aquired\nResync_2\n");
    EXPECT_EQ(m_stage.frames.size(), 2U);
    EXPECT_EQ(m_stage.frames.back(), numbered_frame(2));
}

// The block input leaves the row index at 4, which the next sync pattern finds out of step.
TEST_F(Serial_Input, AfterABlockTheFirstPatternRealigns) {
    const Bytes block = numbered_super_frames(0, 1);
    m_demuxer.feed_psb_raw_data_block_buffer(block.data(), static_cast<unsigned>(block.size()));
    EXPECT_EQ(feed(whole_frame(numbered_frame(13))).out, "Initial PSB Frame sync aquired\nResync_1\n");
    EXPECT_EQ(m_stage.frames.back(), numbered_frame(13));
}

} // namespace
