// The demultiplexer with queues of a few records: a stage stands still, its queue becomes full, the stage
// goes on. What is lost is counted, and what is delivered is right to the last value.
#include "rows/C_Async_PSB_And_RHD_Demux.h"

#include "Captured_Output.h"
#include "Demux_Streams.h"
#include "Log_Capture.h"
#include "NP_Reference_Decoder.h"
#include "Recording_Listeners.h"

#include <gtest/gtest.h>

#include <array>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

using namespace Pelgar::ORBE;
using namespace Pelgar::ORBE::demux;
using namespace Pelgar::ORBE::test;
using Lines = std::vector<std::string>;
using Numbers = std::vector<std::uint64_t>;

constexpr std::uint64_t little_memory = 16 << 20U;
constexpr std::uint32_t block_length = 120;
constexpr std::size_t transfer_rows = 512;
constexpr std::size_t rows_per_super_frame = 65;

// Keeps the numbers of the super frames that a port delivers, and holds the port's thread up on request.
class Numbered_Samples : public I_Sample_Listener {
public:
    void begin_sample(const Sample_Position& position) override {
        std::unique_lock lock(m_mutex);
        m_numbers.push_back(position.super_frame);
        m_changed.notify_all();
        m_changed.wait(lock, [this] { return !m_is_held; });
    }

    void hold(bool is_held) {
        const std::lock_guard lock(m_mutex);
        m_is_held = is_held;
        m_changed.notify_all();
    }

    void wait_for(std::size_t count) {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [&] { return m_numbers.size() >= count; });
    }

    Numbers numbers() const {
        const std::lock_guard lock(m_mutex);
        return m_numbers;
    }

private:
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    Numbers m_numbers;
    bool m_is_held = false;
};

Numbers from_to(std::uint64_t first, std::uint64_t end) {
    Numbers numbers;
    for (; first < end; ++first) {
        numbers.push_back(first);
    }
    return numbers;
}

Numbers operator+(Numbers left, const Numbers& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

// A box of four probes that start one after the other, and now and then a row of RHD frames without streams.
class Rows_Of_A_Box {
public:
    explicit Rows_Of_A_Box(std::uint32_t super_frames)
        : m_np_rows(row_payloads(numbered_super_frames(0, super_frames))) {
        Words words;
        for (std::uint32_t seed = 0; seed < super_frames; ++seed) {
            const Words frame = rhd_words(numbered_rhd_frame(seed, 0), 0);
            words.insert(words.end(), frame.begin(), frame.end());
        }
        m_rhd_rows = row_payloads(words);
    }

    Bytes next_transfer() {
        Bytes bytes;
        for (std::size_t row = 0; row < transfer_rows; ++row) {
            append_next(bytes);
        }
        return bytes;
    }

    // Rows of a stream so far.
    std::size_t np_rows(unsigned port) const { return m_np_sent[port]; }

    std::size_t rhd_rows() const { return m_rhd_sent; }

private:
    void append_next(Bytes& bytes) {
        const unsigned turn = static_cast<unsigned>(m_turn++ % 41);
        if (turn == 40) {
            m_counters.append(bytes, 4, m_rhd_rows.at(m_rhd_sent++));
        } else {
            const unsigned port = turn % 4;
            m_counters.append(bytes, port, m_np_rows.at(m_np_sent[port]++));
        }
    }

    std::vector<Row_Payload> m_np_rows;
    std::vector<Row_Payload> m_rhd_rows;
    std::array<std::size_t, 4> m_np_sent{};
    std::size_t m_rhd_sent = 0;
    std::size_t m_turn = 0;
    Row_Counters m_counters;
};

class Full_Queues : public testing::Test {
protected:
    Full_Queues() {
        captured_output([this] {
            m_demux.emplace();
            m_demux->set_queue_memory(little_memory);
            m_demux->set_transfer_length(transfer_rows * 16);
            m_demux->set_block_length(block_length);
        });
        for (unsigned port = 0; port < 4; ++port) {
            m_samples[port] = std::make_shared<Numbered_Samples>();
            m_values[port] = std::make_shared<Recording_L2_Listener>();
            m_demux->set_sample_listener(m_samples[port], port);
            m_demux->set_L2_CH_Results_Listener(m_values[port], port);
        }
        m_demux->set_RHD_Results_Listener(m_rhd_listener);
    }

    ~Full_Queues() override {
        captured_output([this] { m_demux.reset(); });
    }

    void start() {
        m_demux->start_worker_threads();
        m_thread = std::thread([this] { m_demux->run(); });
    }

    void end() {
        m_demux->poison_queue();
        m_thread.join();
    }

    // What the main queue holds and one more, before anybody takes them; then all that is there is taken.
    void lose_a_transfer(Rows_Of_A_Box& box) {
        for (int i = 0; i < 33; ++i) {
            push_bytes(*m_demux, box.next_transfer());
        }
        ASSERT_EQ(m_demux->get_lost_byte_count(), transfer_rows * 16);
        start();
        m_demux->wait_until_delivered();
    }

    // Each delivered set of AP values is that of its super frame.
    void expect_right_values(unsigned port) {
        NP_Reference_Decoder expected;
        for (const std::uint64_t number : m_samples[port]->numbers()) {
            expected.feed_block(numbered_super_frames(static_cast<std::uint32_t>(13 * number), 1));
        }
        EXPECT_EQ(ap_sets(m_values[port]->sets), ap_sets(expected.sets)) << "port " << port;
    }

    static std::vector<Channel_Set> ap_sets(const std::vector<Channel_Set>& sets) {
        std::vector<Channel_Set> ap;
        for (const Channel_Set& set : sets) {
            if (set.band == Band::AP) {
                ap.push_back(set);
            }
        }
        return ap;
    }

    std::optional<Async_NP_And_RHD_Demux> m_demux;
    std::array<std::shared_ptr<Numbered_Samples>, 4> m_samples;
    std::array<std::shared_ptr<Recording_L2_Listener>, 4> m_values;
    std::shared_ptr<Recording_Rhd_Listener> m_rhd_listener = std::make_shared<Recording_Rhd_Listener>();
    std::thread m_thread;
};

// The transfers behind the loss begin in the middle of super frames and of an RHD frame.
TEST_F(Full_Queues, AMainThreadThatStandsStillCostsWholeTransfersAndIsInStepAgain) {
    constexpr std::size_t kept = 32;
    constexpr std::size_t lost = 10;
    constexpr std::size_t behind = 80;
    Rows_Of_A_Box box(600);
    const Log_Capture log;
    std::array<std::size_t, 4> np_rows_kept{};
    std::array<std::size_t, 4> np_rows_lost{};
    std::size_t rhd_rows_kept = 0;
    std::size_t rhd_rows_lost = 0;
    const auto output = captured_output([&] {
        for (std::size_t i = 0; i < kept; ++i) {
            push_bytes(*m_demux, box.next_transfer());
        }
        for (unsigned port = 0; port < 4; ++port) {
            np_rows_kept[port] = box.np_rows(port);
        }
        rhd_rows_kept = box.rhd_rows();
        for (std::size_t i = 0; i < lost; ++i) {
            push_bytes(*m_demux, box.next_transfer());
        }
        for (unsigned port = 0; port < 4; ++port) {
            np_rows_lost[port] = box.np_rows(port);
        }
        rhd_rows_lost = box.rhd_rows();
        EXPECT_EQ(m_demux->get_lost_byte_count(), lost * transfer_rows * 16);
        start();
        m_demux->wait_until_delivered();
        for (std::size_t i = 0; i < behind; ++i) {
            push_bytes(*m_demux, box.next_transfer());
            m_demux->wait_until_delivered();
        }
    });
    captured_output([this] { end(); });
    EXPECT_EQ(m_demux->get_lost_byte_count(), lost * transfer_rows * 16);

    for (unsigned port = 0; port < 4; ++port) {
        ASSERT_NE(np_rows_kept[port] % rows_per_super_frame, 0U);
        ASSERT_NE(np_rows_lost[port] % rows_per_super_frame, 0U);
        const std::uint64_t gap_begin = np_rows_kept[port] / rows_per_super_frame;
        const std::uint64_t gap_end = np_rows_lost[port] / rows_per_super_frame + 1;
        EXPECT_EQ(m_samples[port]->numbers(),
                  from_to(0, gap_begin) + from_to(gap_end, gap_end + block_length));
        EXPECT_EQ(m_demux->get_lost_super_frame_count(port), 0U) << "of its own queue";
        EXPECT_EQ(m_demux->get_stream_damage(port), Stream_Damage{}) << "it is not the box that lost them";
        expect_right_values(port);
    }

    constexpr std::size_t words_per_frame = 20;
    ASSERT_NE(rhd_rows_kept * 7 % words_per_frame, 0U);
    std::vector<Rhd_Frame_Copy> expected_frames;
    for (std::size_t frame = 0; (frame + 1) * words_per_frame <= box.rhd_rows() * 7; ++frame) {
        if ((frame + 1) * words_per_frame <= rhd_rows_kept * 7 ||
            frame * words_per_frame >= rhd_rows_lost * 7) {
            expected_frames.push_back(numbered_rhd_frame(static_cast<std::uint32_t>(frame), 0));
        }
    }
    EXPECT_EQ(m_rhd_listener->frames(), expected_frames);
    EXPECT_EQ(m_demux->get_lost_RHD_word_count(), 0U);

    EXPECT_EQ(output.err, "Resync warning 1\n");
    EXPECT_EQ(output.out.find("disconitinuty"), std::string::npos) << output.out;
    EXPECT_EQ(output.out.find("discarded"), std::string::npos) << output.out;
    EXPECT_EQ(log.count(-1, "Main demux queue is full : 8192 bytes lost so far"), 1);
    EXPECT_EQ(log.count(-1, "Main demux queue is full : 81920 bytes lost so far"), 1);
}

// What a loss in the queue hides is reported again behind it.
TEST_F(Full_Queues, DamageBehindALossIsReportedAsEver) {
    Rows_Of_A_Box box(300);
    const auto output = captured_output([&] {
        ASSERT_NO_FATAL_FAILURE(lose_a_transfer(box));
        push_bytes(*m_demux, box.next_transfer());
        Bytes damaged = box.next_transfer();
        damaged[4 * 16 + 1] ^= 0x40U;
        push_bytes(*m_demux, damaged);
        end();
    });
    const std::string line = "Possible demux row counter disconitinuty";
    const std::size_t first = output.out.find(line);
    ASSERT_NE(first, std::string::npos);
    const std::size_t second = output.out.find(line, first + 1);
    ASSERT_NE(second, std::string::npos) << "there and back";
    EXPECT_EQ(output.out.find(line, second + 1), std::string::npos);
}

// The rows of a stream that sends seldom, picked out of a transfer or left in it.
Bytes rows_of(const Bytes& transfer, unsigned stream, bool wanted) {
    Bytes rows;
    for (auto row = transfer.begin(); row != transfer.end(); row += 16) {
        if ((*row % 16 == stream) == wanted) {
            rows.insert(rows.end(), row, row + 16);
        }
    }
    return rows;
}

// The counter of a stream that has no row in the first transfer behind the loss has gone on meanwhile, too.
TEST_F(Full_Queues, AStreamThatComesLateBehindALossHasNoGap) {
    Rows_Of_A_Box box(300);
    const auto output = captured_output([&] {
        ASSERT_NO_FATAL_FAILURE(lose_a_transfer(box));
        const Bytes transfer = box.next_transfer();
        push_bytes(*m_demux, rows_of(transfer, 4, false));
        push_bytes(*m_demux, rows_of(transfer, 4, true));
        Bytes damaged = box.next_transfer();
        damaged = rows_of(damaged, 4, true);
        damaged[1] ^= 0x40U;
        push_bytes(*m_demux, damaged);
        end();
    });
    const std::size_t first = output.out.find("Possible demux row counter disconitinuty for demux ch : 4");
    ASSERT_NE(first, std::string::npos) << "what is damaged behind it is told";
    EXPECT_EQ(output.out.find("disconitinuty"), output.out.find("disconitinuty", first));
    EXPECT_EQ(m_demux->get_stream_damage(4).row_gaps, 2U) << "there and back";
    for (unsigned port = 0; port < 4; ++port) {
        EXPECT_EQ(m_demux->get_stream_damage(port).row_gaps, 0U);
    }
}

TEST_F(Full_Queues, APoisonIsNeverLost) {
    Rows_Of_A_Box box(200);
    const auto output = captured_output([&] {
        for (int i = 0; i < 40; ++i) {
            push_bytes(*m_demux, box.next_transfer());
        }
        ASSERT_NE(m_demux->get_lost_byte_count(), 0U);
        m_demux->poison_queue();
        m_demux->run();
    });
    EXPECT_TRUE(m_demux->is_done());
}

// The port's worker has one block in hand and three more in its queue when its listener stands still.
TEST_F(Full_Queues, AListenerThatStandsStillCostsItsPortWholeBlocks) {
    constexpr std::uint64_t room = 4;
    constexpr std::uint64_t blocks = 12;
    constexpr std::uint64_t behind = 3;
    constexpr unsigned held = 2;
    constexpr unsigned other = 1;
    const auto payloads = row_payloads(numbered_super_frames(0, (blocks + behind) * block_length + 1));
    Row_Counters counters;
    std::size_t row = 0;
    // The first row behind a block sends it to its worker.
    const auto push_block = [&](std::uint64_t number) {
        Bytes rows;
        while (row < (number + 1) * block_length * rows_per_super_frame + 1) {
            counters.append(rows, other, payloads[row]);
            counters.append(rows, held, payloads[row]);
            ++row;
        }
        push_in_full_buffers(*m_demux, rows);
    };
    const Log_Capture log;
    const auto output = captured_output([&] {
        m_samples[held]->hold(true);
        start();
        for (std::uint64_t block = 0; block < blocks; ++block) {
            push_block(block);
            m_samples[other]->wait_for((block + 1) * block_length);
            m_samples[held]->wait_for(1);
        }
        // The row that follows on the other port may be before its turn on this one.
        while (m_demux->get_lost_super_frame_count(held) < (blocks - room) * block_length) {
            std::this_thread::yield();
        }
        m_samples[held]->hold(false);
        m_demux->wait_until_delivered();
        for (std::uint64_t block = blocks; block < blocks + behind; ++block) {
            push_block(block);
            m_demux->wait_until_delivered();
        }
    });
    captured_output([this] { end(); });
    EXPECT_EQ(m_demux->get_lost_super_frame_count(held), (blocks - room) * block_length);
    EXPECT_EQ(m_demux->get_lost_super_frame_count(other), 0U);
    EXPECT_EQ(m_demux->get_lost_byte_count(), 0U);
    EXPECT_EQ(m_demux->get_stream_damage(held), Stream_Damage{}) << "it is not the box that lost them";
    EXPECT_EQ(m_samples[held]->numbers(),
              from_to(0, room * block_length) +
                  from_to(blocks * block_length, (blocks + behind) * block_length));
    EXPECT_EQ(m_samples[other]->numbers(), from_to(0, (blocks + behind) * block_length));
    expect_right_values(held);
    EXPECT_EQ(output.err, "");
    EXPECT_EQ(output.out.find("discarded"), std::string::npos) << output.out;
    EXPECT_EQ(log.count(-1, "Queue of NP worker 2 is full : 120 super frames lost so far"), 1);
    EXPECT_EQ(log.count(-1, "Queue of NP worker 2 is full : 960 super frames lost so far"), 1);
}

} // namespace
