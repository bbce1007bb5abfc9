// What is wrong with the streams is counted, each kind for each stream, in both ways of taking super frames.
#include "rows/C_Async_PSB_And_RHD_Demux.h"

#include "probe/CP_L2_CH_Results_Null_Writer.h"

#include "Captured_Output.h"
#include "Demux_Streams.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <thread>
#include <vector>

namespace {

using namespace Pelgar::ORBE::demux;
using namespace Pelgar::ORBE::test;

constexpr std::size_t block = 4; // super frames
constexpr std::size_t rows_per_super_frame = 65;
constexpr unsigned rhd = 4;

// Hears nothing, but has its port take super frames whole.
class Deaf final : public I_Sample_Listener {
public:
    void begin_sample(const Sample_Position& /*position*/) override {}
};

struct Damaged_Stream {
    Row_Counters counters{};
    Bytes rows{};

    // The rows of super frames from number `first` on, on a port. `lost` rows in front of them are counted,
    // but are not there.
    void append(unsigned port, std::uint32_t first, std::size_t super_frames, unsigned lost = 0) {
        append(port, numbered_super_frames(13 * first, super_frames), lost);
    }

    void append(unsigned port, const Bytes& payload, unsigned lost = 0) {
        counters.skip(port, lost);
        for (const Row_Payload& row : row_payloads(payload)) {
            counters.append(rows, port, row);
        }
    }

    // A super frame with so many wrong tags.
    void append_with_wrong_tags(unsigned port, std::uint32_t number, std::size_t count) {
        Bytes payload = numbered_super_frames(13 * number, 1);
        for (std::size_t i = 0; i < count; ++i) {
            payload[2 * i + 101] ^= 0x80;
        }
        append(port, payload);
    }
};

class Stream_Damage_Counts : public testing::TestWithParam<bool> {
protected:
    // Delivers the rows, and answers what is counted of each stream. Behind them each port has a row more,
    // because a block goes on its way with the row behind it.
    std::vector<Stream_Damage> damage_of(Damaged_Stream stream, std::vector<std::uint32_t> next) {
        for (unsigned port = 0; port < next.size(); ++port) {
            stream.append(port, next[port], 1);
        }
        std::vector<Stream_Damage> damage;
        captured_output([&] {
            Async_NP_And_RHD_Demux demux;
            demux.set_block_length(block);
            const auto deaf = std::make_shared<Deaf>();
            const auto values = std::make_shared<CP_L2_CH_Results_Null_Writer>();
            for (unsigned port = 0; port < np_port_count; ++port) {
                if (GetParam()) {
                    demux.set_sample_listener(deaf, port);
                }
                demux.set_L2_CH_Results_Listener(values, port);
            }
            demux.start_worker_threads();
            std::thread thread([&] { demux.run(); });
            push_bytes(demux, stream.rows);
            demux.wait_until_delivered();
            for (unsigned id = 0; id <= rhd; ++id) {
                damage.push_back(demux.get_stream_damage(id));
            }
            demux.poison_queue();
            thread.join();
            EXPECT_THROW(demux.get_stream_damage(mux_row::stream_id_count), std::out_of_range);
        });
        return damage;
    }
};

INSTANTIATE_TEST_SUITE_P(Frame_By_Frame, Stream_Damage_Counts, testing::Values(false));
INSTANTIATE_TEST_SUITE_P(Whole_Super_Frames, Stream_Damage_Counts, testing::Values(true));

TEST_P(Stream_Damage_Counts, NothingIsCountedOfStreamsInOrder) {
    Damaged_Stream stream;
    stream.append(0, 0, 3 * block);
    stream.append(3, 0, 2 * block);
    const auto damage = damage_of(stream, {3 * block});
    EXPECT_EQ(damage, std::vector<Stream_Damage>(5));
}

TEST_P(Stream_Damage_Counts, RowsAndFramesThatAreMissingAreGapsOfTheirPort) {
    Damaged_Stream stream;
    stream.append(0, 0, block);
    stream.append(1, 0, block);
    stream.append(1, block + 2, block, 2 * rows_per_super_frame); // two super frames are missing
    stream.append(1, 2 * block + 5, block, 3 * rows_per_super_frame);
    stream.append(0, block, block);
    const auto damage = damage_of(stream, {2 * block, 3 * block + 5});
    EXPECT_EQ(damage[0], (Stream_Damage{0, 0, 0}));
    EXPECT_EQ(damage[1], (Stream_Damage{2, 2, 0}));
}

TEST_P(Stream_Damage_Counts, CounterThatJumpsWithoutAMissingRowIsAGapOfFramesAlone) {
    Damaged_Stream stream;
    stream.append(2, 0, block);
    stream.append(2, 1000, block);
    stream.append(2, 0, block); // a probe that begins anew
    const auto damage = damage_of(stream, {0, 0, block});
    EXPECT_EQ(damage[2], (Stream_Damage{0, 2, 0}));
}

TEST_P(Stream_Damage_Counts, WrongTagsAreNoGap) {
    Damaged_Stream stream;
    stream.append(3, 0, 1);
    stream.append_with_wrong_tags(3, 1, 3);
    stream.append_with_wrong_tags(3, 2, 2);
    stream.append(3, 3, 1);
    const auto damage = damage_of(stream, {0, 0, 0, block});
    EXPECT_EQ(damage[3], (Stream_Damage{0, 0, 5}));
}

TEST_P(Stream_Damage_Counts, RowsOfTheRHDStreamHaveGapsToo) {
    Damaged_Stream stream;
    const Row_Payload words{};
    stream.counters.append(stream.rows, rhd, words);
    stream.counters.skip(rhd, 7);
    stream.counters.append(stream.rows, rhd, words);
    const auto damage = damage_of(stream, {});
    EXPECT_EQ(damage[rhd], (Stream_Damage{1, 0, 0}));
}

// A lost row puts the rows behind it out of step, until the next block begins with a super frame.
TEST_P(Stream_Damage_Counts, ASingleLostRowIsOneGapOfRows) {
    Damaged_Stream stream;
    Bytes payload = numbered_super_frames(0, 4 * block);
    constexpr std::size_t row = 14;
    constexpr std::size_t lost = 100;
    Bytes before(payload.begin(), payload.begin() + lost * row);
    Bytes behind(payload.begin() + (lost + 1) * row, payload.end());
    stream.append(0, before);
    stream.append(0, behind, 1);
    const auto damage = damage_of(stream, {4 * block});
    EXPECT_EQ(damage[0].row_gaps, 1U);
    EXPECT_EQ(damage[0].wrong_tags, 0U);
    if (GetParam()) {
        EXPECT_EQ(damage[0].frame_gaps, 1U) << "what is out of step has no counter";
    } else {
        EXPECT_GE(damage[0].frame_gaps, 1U) << "what is out of step is followed as it comes";
    }
}

} // namespace
