// A reader of RHD words that stands still until its FIFO is full.
#include "rhd/RHD_Frame_Reader.h"
#include "rhd/RHD_Word_Fifo.h"

#include "Captured_Output.h"
#include "Demux_Streams.h"
#include "Log_Capture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace {

using namespace Pelgar::ORBE::demux;
using namespace Pelgar::ORBE::test;

constexpr std::size_t transfer_words = 5001; // a frame ends in the middle of a transfer
constexpr std::size_t stream_count = 4;

class RHD_Loss : public testing::Test {
protected:
    RHD_Loss() {
        for (std::uint32_t seed = 0; m_words.size() < 500 * transfer_words; ++seed) {
            const Words frame = rhd_words(numbered_rhd_frame(seed, stream_count), stream_count);
            m_frame_words = frame.size();
            m_words.insert(m_words.end(), frame.begin(), frame.end());
        }
    }

    void push_transfer() {
        std::copy_n(m_words.begin() + static_cast<std::ptrdiff_t>(m_sent), transfer_words, m_fifo.place());
        m_fifo.push_placed(transfer_words);
        m_sent += transfer_words;
    }

    RHD_Word_Fifo m_fifo;
    Words m_words;
    std::size_t m_frame_words = 0;
    std::size_t m_sent = 0;
};

TEST_F(RHD_Loss, AFullFifoLosesWholeTransfersAndTheFramesThatTheyCut) {
    const Log_Capture log;
    m_fifo.set_limit(4);
    while (m_fifo.lost_words() == 0) {
        push_transfer();
    }
    const std::size_t kept = m_sent - transfer_words;
    EXPECT_GT(kept, rhd_piece_capacity) << "short transfers share pieces";
    while (m_fifo.lost_words() < 10 * transfer_words) {
        push_transfer();
    }
    const std::size_t resumed = m_sent;
    ASSERT_NE(kept % m_frame_words, 0U);
    ASSERT_NE(resumed % m_frame_words, 0U);
    EXPECT_EQ(m_fifo.size(), kept);

    RHD_Frame_Reader reader(m_fifo);
    reader.set_enabled_stream_count(stream_count);
    RHD_Frame frame;
    const auto expect_frames = [&](std::size_t first, std::size_t end) {
        for (std::size_t number = first; number < end; ++number) {
            ASSERT_TRUE(reader.read_frame(frame)) << number;
            ASSERT_EQ(copy_of(frame), numbered_rhd_frame(static_cast<std::uint32_t>(number), stream_count))
                << number;
        }
    };
    const auto output = captured_output([&] {
        // Up to where room is again.
        const std::size_t whole_frames = kept / m_frame_words;
        expect_frames(0, whole_frames);
        push_transfer();
        push_transfer();
        EXPECT_THROW(reader.read_frame(frame), RHD_Words_Forgotten) << "the frame that was cut";
        expect_frames(resumed / m_frame_words + 1, m_sent / m_frame_words);
    });
    EXPECT_EQ(m_fifo.lost_words(), 10 * transfer_words);
    EXPECT_EQ(reader.get_valid_frame_count(),
              kept / m_frame_words + m_sent / m_frame_words - resumed / m_frame_words - 1);
    EXPECT_EQ(output.err, "Resync warning 1\n");
    EXPECT_EQ(log.count(-1, "Queue of RHD worker is full : 5001 words lost so far"), 1);
    m_fifo.tell_loss();
    m_fifo.tell_loss();
    EXPECT_EQ(log.count(-1, "Queue of RHD worker is full : 50010 words lost so far"), 1);
}

TEST_F(RHD_Loss, AReaderBetweenTwoFramesLosesNothingMore) {
    m_fifo.push_words(std::span(m_words).first(m_frame_words));
    m_fifo.note_loss();
    m_fifo.push_words(std::span(m_words).subspan(7 * m_frame_words, m_frame_words));
    RHD_Frame_Reader reader(m_fifo);
    reader.set_enabled_stream_count(stream_count);
    RHD_Frame frame;
    ASSERT_TRUE(reader.read_frame(frame));
    EXPECT_EQ(copy_of(frame), numbered_rhd_frame(0, stream_count));
    EXPECT_THROW(reader.read_frame(frame), RHD_Words_Forgotten);
    ASSERT_TRUE(reader.read_frame(frame));
    EXPECT_EQ(copy_of(frame), numbered_rhd_frame(7, stream_count));
}

// The words of a stop are never lost.
TEST_F(RHD_Loss, PushedWordsFindRoomInAFullFifo) {
    m_fifo.set_limit(2);
    while (m_fifo.lost_words() == 0) {
        push_transfer();
    }
    const std::size_t size = m_fifo.size();
    m_fifo.push_words(std::span(m_words).first(3));
    EXPECT_EQ(m_fifo.size(), size + 3);
}

} // namespace
