#include "rhd/RHD_Frame_Reader.h"

#include "Captured_Output.h"
#include "Demux_Streams.h"
#include "Recording_Listeners.h"

#include <gtest/gtest.h>

namespace {

using namespace Pelgar::ORBE::demux;
using namespace Pelgar::ORBE::test;

class RHD_Frame_Reader_Test : public testing::Test {
protected:
    struct Result {
        bool valid = false;
        Rhd_Frame_Copy frame;
        Captured_Output output;
    };

    Result read() {
        Result result;
        result.output = captured_output([&] {
            RHD_Frame frame;
            result.valid = m_reader.read_frame(frame);
            result.frame = copy_of(frame);
        });
        return result;
    }

    RHD_Word_Fifo m_fifo;
    RHD_Frame_Reader m_reader{m_fifo};
};

TEST_F(RHD_Frame_Reader_Test, FrameLengthIs20Plus35NPlusNMod4) {
    for (std::uint32_t streams = 0; streams <= 32; ++streams) {
        m_reader.set_enabled_stream_count(streams);
        const Words words = rhd_words(numbered_rhd_frame(1, streams), streams);
        ASSERT_EQ(words.size(), 20 + 35 * streams + streams % 4);
        m_fifo.push_words(words);
        EXPECT_TRUE(read().valid);
        EXPECT_EQ(m_fifo.size(), 0U) << streams;
    }
}

TEST_F(RHD_Frame_Reader_Test, EveryFieldIsReadForEveryStreamCount) {
    for (std::uint32_t streams = 0; streams <= 32; ++streams) {
        m_reader.set_enabled_stream_count(streams);
        const Rhd_Frame_Copy frame = numbered_rhd_frame(streams + 3, streams);
        m_fifo.push_words(rhd_words(frame, streams));
        const Result result = read();
        EXPECT_TRUE(result.valid);
        EXPECT_EQ(result.frame, frame) << streams;
        EXPECT_EQ(result.output.out + result.output.err, "");
    }
}

TEST_F(RHD_Frame_Reader_Test, WithoutStreamsAFrameIs20WordsWithoutAmplifierData) {
    m_fifo.push_words(Words{0x2A53, 0x3813, 0x2AAA, 0xD7A2, 0x1234, 0x5678, 0xAAAA, 0xBBBB, 1,      2,
                            3,      4,      5,      6,      7,      8,      0x0011, 0x2200, 0x0033, 0x4400});
    const Result result = read();
    EXPECT_TRUE(result.valid);
    EXPECT_EQ(result.frame.preamble, 0xD7A22AAA38132A53U);
    EXPECT_EQ(result.frame.timestamp, 0x56781234U);
    for (const auto& samples : result.frame.amplifier_data) {
        EXPECT_FALSE(samples.has_value());
    }
    EXPECT_EQ(result.frame.board_adc_data, (std::array<std::uint16_t, 8>{1, 2, 3, 4, 5, 6, 7, 8}));
    EXPECT_EQ(result.frame.ttl_in, 0x22000011U);
    EXPECT_EQ(result.frame.ttl_out, 0x44000033U);
    EXPECT_EQ(m_fifo.size(), 0U);
}

TEST_F(RHD_Frame_Reader_Test, DataIsPositionMajor) {
    m_reader.set_enabled_stream_count(3);
    Words words{0x2A53, 0x3813, 0x2AAA, 0xD7A2, 0, 0};
    for (unsigned i = 0; i < 105; ++i) {
        words.push_back(static_cast<std::uint16_t>(i));
    }
    words.resize(20 + 105 + 3);
    m_fifo.push_words(words);
    const Result result = read();
    EXPECT_EQ(m_fifo.size(), 0U);
    for (unsigned stream = 0; stream < 3; ++stream) {
        for (unsigned position = 0; position < 35; ++position) {
            EXPECT_EQ(result.frame.amplifier_data[stream]->at(position), 3 * position + stream);
        }
    }
}

TEST_F(RHD_Frame_Reader_Test, WordsOfMoreThan32StreamsArePassedOver) {
    for (const std::uint32_t streams : {33U, 40U, 71U, 2000U}) {
        m_reader.set_enabled_stream_count(streams);
        const Rhd_Frame_Copy frame = numbered_rhd_frame(9, streams);
        m_fifo.push_words(rhd_words(frame, streams));
        const Result result = read();
        EXPECT_TRUE(result.valid);
        EXPECT_EQ(result.frame, frame) << streams;
        EXPECT_EQ(m_fifo.size(), 0U);
    }
}

TEST_F(RHD_Frame_Reader_Test, ValidFramesAreCounted) {
    EXPECT_EQ(m_reader.get_valid_frame_count(), 0U);
    m_fifo.push_words(rhd_words(numbered_rhd_frame(1, 0), 0));
    m_fifo.push_words(Words{0x2A53, 1, 2, 3});
    m_fifo.push_words(rhd_words(numbered_rhd_frame(2, 0), 0));
    EXPECT_TRUE(read().valid);
    EXPECT_FALSE(read().valid);
    EXPECT_EQ(m_reader.get_valid_frame_count(), 1U);
    EXPECT_TRUE(read().valid);
    EXPECT_EQ(m_reader.get_valid_frame_count(), 2U);
}

TEST_F(RHD_Frame_Reader_Test, GarbageInFrontIsReportedOnceAndSkipped) {
    m_fifo.push_words(Words{1, 2, 3, 0x3813, 0x532A});
    const Rhd_Frame_Copy frame = numbered_rhd_frame(4, 0);
    m_fifo.push_words(rhd_words(frame, 0));
    const Result result = read();
    EXPECT_TRUE(result.valid);
    EXPECT_EQ(result.frame, frame);
    EXPECT_EQ(result.output.err, "Resync warning 1\n");
    EXPECT_EQ(result.output.out, "Resync info 1\n");
}

TEST_F(RHD_Frame_Reader_Test, AFirstPreambleWordWithoutTheRestIsInvalidAndConsumesFourWords) {
    m_fifo.push_words(Words{0x2A53, 0x3813, 0x2AAA, 0xD7A3});
    const Rhd_Frame_Copy frame = numbered_rhd_frame(4, 0);
    m_fifo.push_words(rhd_words(frame, 0));
    const Result invalid = read();
    EXPECT_FALSE(invalid.valid);
    EXPECT_EQ(invalid.output.err, "invalid RHD frame preamble \n");
    EXPECT_EQ(invalid.output.out, "");
    EXPECT_EQ(m_fifo.size(), 20U);
    const Result valid = read();
    EXPECT_TRUE(valid.valid);
    EXPECT_EQ(valid.frame, frame);
    EXPECT_EQ(valid.output.out + valid.output.err, "");
}

TEST_F(RHD_Frame_Reader_Test, EveryWordOfThePreambleIsChecked) {
    const Words preamble{0x2A53, 0x3813, 0x2AAA, 0xD7A2};
    for (std::size_t i = 1; i < preamble.size(); ++i) {
        Words wrong = preamble;
        wrong[i] ^= 0x0100;
        m_fifo.push_words(wrong);
        const Result result = read();
        EXPECT_FALSE(result.valid);
        EXPECT_EQ(result.output.err, "invalid RHD frame preamble \n") << i;
    }
}

// The search takes up again behind the four words, even where a preamble begins among them.
TEST_F(RHD_Frame_Reader_Test, APreambleInsideAFalseOneIsLost) {
    m_fifo.push_words(Words{0x2A53});
    m_fifo.push_words(rhd_words(numbered_rhd_frame(4, 0), 0));
    const Rhd_Frame_Copy next = numbered_rhd_frame(5, 0);
    m_fifo.push_words(rhd_words(next, 0));
    EXPECT_EQ(read().output.err, "invalid RHD frame preamble \n");
    const Result result = read();
    EXPECT_TRUE(result.valid);
    EXPECT_EQ(result.frame, next);
    EXPECT_EQ(result.output.err, "Resync warning 1\n");
    EXPECT_EQ(result.output.out, "Resync info 1\n");
}

TEST_F(RHD_Frame_Reader_Test, AfterTheStopAPendingFrameIsFilledUpWithZeros) {
    for (std::size_t words_before_stop = 4; words_before_stop < 20 + 2 * 35 + 2; ++words_before_stop) {
        RHD_Word_Fifo fifo;
        RHD_Frame_Reader reader(fifo);
        reader.set_enabled_stream_count(2);
        Words words = rhd_words(numbered_rhd_frame(7, 2), 2);
        std::fill(words.begin() + static_cast<std::ptrdiff_t>(words_before_stop), words.end(),
                  std::uint16_t{0});
        fifo.push_words(std::span(words).first(words_before_stop));
        fifo.signal_to_stop();
        fifo.push_words(Words(7840));

        RHD_Word_Fifo whole_fifo;
        RHD_Frame_Reader whole_reader(whole_fifo);
        whole_reader.set_enabled_stream_count(2);
        whole_fifo.push_words(words);

        RHD_Frame frame;
        RHD_Frame expected;
        EXPECT_TRUE(reader.read_frame(frame));
        EXPECT_TRUE(whole_reader.read_frame(expected));
        EXPECT_EQ(copy_of(frame), copy_of(expected)) << words_before_stop;
    }
}

TEST_F(RHD_Frame_Reader_Test, AfterTheStopAPreambleSearchEndsInvalid) {
    m_fifo.push_words(Words{1, 2, 3});
    m_fifo.signal_to_stop();
    m_fifo.push_words(Words(7840));
    const Result result = read();
    EXPECT_FALSE(result.valid);
    EXPECT_EQ(result.output.err, "Resync warning 1\ninvalid RHD frame preamble \n");
    EXPECT_EQ(result.output.out, "Resync info 1\n");
    EXPECT_EQ(m_fifo.size(), 3U + 7840U - 4U);
}

TEST_F(RHD_Frame_Reader_Test, AfterTheStopFramesThatTheZerosDoNotFillEndToo) {
    for (const std::uint32_t streams : {224U, 1000U, 0xFFFFFFFFU}) {
        RHD_Word_Fifo fifo;
        RHD_Frame_Reader reader(fifo);
        reader.set_enabled_stream_count(streams);
        fifo.push_words(Words{0x2A53, 0x3813, 0x2AAA, 0xD7A2, 1, 2, 3});
        fifo.signal_to_stop();
        fifo.push_words(Words(7840));
        RHD_Frame frame;
        EXPECT_TRUE(reader.read_frame(frame));
        EXPECT_EQ(frame.timestamp, 0x20001U);
        EXPECT_EQ(frame.amplifier_data[0]->at(0), 3);
        EXPECT_EQ(frame.ttl_out, 0U);
        EXPECT_EQ(fifo.size(), 0U);
    }
}

} // namespace
