// The whole demultiplexer against the plain reference: rows of all ports and of the RHD stream, interleaved,
// with faults, in transfer buffers of odd sizes, through all threads.
#include "rows/C_Async_PSB_And_RHD_Demux.h"

#include "Anomaly_Lines.h"
#include "Captured_Output.h"
#include "Demux_Streams.h"
#include "Log_Capture.h"
#include "Mux_Reference.h"
#include "Recording_Listeners.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <ostream>
#include <random>
#include <sstream>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace {

using namespace Pelgar::ORBE::demux;
using namespace Pelgar::ORBE::test;

struct Stream_Kind {
    std::uint32_t seed;
    std::size_t rhd_stream_count;
    // One row in so many is lost, and one buffer in so many has a row without its marker.
    std::uint32_t rows_per_lost_row;
    std::uint32_t buffers_per_lost_marker;
    // A lost row costs the rest of its block, so that streams with many faults deliver little.
    std::size_t least_channel_sets;
    // The ports' rows come one by one in turn and the RHD rows behind them, as from the box, but for one in
    // so many; 0: in any order.
    std::uint32_t rows_per_lost_turn = 0;

    friend void PrintTo(const Stream_Kind& kind, std::ostream* stream) {
        *stream << kind.rhd_stream_count << " RHD streams"
                << (kind.rows_per_lost_turn != 0 ? ", rows in turn" : "");
    }
};

class Random_Rows {
public:
    explicit Random_Rows(const Stream_Kind& kind)
        : m_random(kind.seed), m_rhd_stream_count(kind.rhd_stream_count),
          m_rows_per_lost_row(kind.rows_per_lost_row) {
        for (std::uint32_t& counter : m_frame_counter) {
            counter = 13 * draw(0x100000 / 13);
        }
    }

    std::uint32_t draw(std::uint32_t limit) { return static_cast<std::uint32_t>(m_random() % limit); }

    // The stream whose row comes next in turn.
    unsigned next_in_turn() {
        constexpr std::size_t port_rows_a_tick = 4 * 65;
        const std::size_t rhd_rows_a_tick = (20 + 35 * m_rhd_stream_count) / 7;
        const std::size_t at = m_row_of_tick++ % (port_rows_a_tick + rhd_rows_a_tick);
        return at < port_rows_a_tick ? static_cast<unsigned>(at % 4) : 4;
    }

    void append_port_row(Bytes& bytes, unsigned port) {
        std::vector<Row_Payload>& rows = m_port_rows[port];
        if (rows.empty()) {
            fill_super_frame(port);
        }
        append_or_lose(bytes, port, rows.back());
        rows.pop_back();
    }

    void append_rhd_row(Bytes& bytes) { append_or_lose(bytes, 4, next_rhd_payload()); }

    void append_unknown_row(Bytes& bytes) { m_counters.append(bytes, 5 + draw(11), {}); }

    // Rows that bring the RHD reader into step from wherever it is, and two frames that end with a row.
    Bytes rhd_tail() {
        Words words(7 * 400);
        for (int frame = 0; frame < 7; ++frame) {
            append_rhd_frame(words);
        }
        Bytes bytes;
        for (const Row_Payload& payload : row_payloads(words)) {
            m_counters.append(bytes, 4, payload);
        }
        return bytes;
    }

private:
    void append_or_lose(Bytes& bytes, unsigned id, const Row_Payload& payload) {
        if (draw(m_rows_per_lost_row) == 0) {
            m_counters.skip(id, 1 + draw(100));
        } else {
            m_counters.append(bytes, id, payload);
        }
    }

    // The rows of the port's next super frame, the last one first.
    void fill_super_frame(unsigned port) {
        for (std::uint32_t frame = 0; frame < 13; ++frame) {
            Adc_Frame values = frame_with_counter(m_frame_counter[port]++);
            for (std::size_t i = 0; i < 33; ++i) {
                values[i] = static_cast<std::uint16_t>(draw(0x400));
            }
            for (const Row_Payload& row : row_payloads(psb_words(values, frame == 0))) {
                m_port_rows[port].push_back(row);
            }
        }
        if (draw(300) == 0) {
            m_port_rows[port][draw(65)][draw(7)] ^= static_cast<std::uint16_t>(draw(0x10000));
        }
        std::reverse(m_port_rows[port].begin(), m_port_rows[port].end());
    }

    void append_rhd_frame(Words& words) {
        const Words next =
            rhd_words(numbered_rhd_frame(m_rhd_frame++, m_rhd_stream_count), m_rhd_stream_count);
        words.insert(words.end(), next.begin(), next.end());
    }

    Row_Payload next_rhd_payload() {
        while (m_rhd_pending.size() < 7) {
            append_rhd_frame(m_rhd_pending);
        }
        Row_Payload payload;
        std::copy_n(m_rhd_pending.begin(), 7, payload.begin());
        m_rhd_pending.erase(m_rhd_pending.begin(), m_rhd_pending.begin() + 7);
        return payload;
    }

    std::mt19937 m_random;
    std::size_t m_rhd_stream_count;
    std::uint32_t m_rows_per_lost_row;
    Row_Counters m_counters;
    std::array<std::uint32_t, 4> m_frame_counter{};
    std::array<std::vector<Row_Payload>, 4> m_port_rows;
    std::uint32_t m_rhd_frame = 0;
    Words m_rhd_pending;
    std::size_t m_row_of_tick = 0;
};

class Random_Demux : public testing::TestWithParam<Stream_Kind> {};

TEST_P(Random_Demux, DeliversAndPrintsWhatTheReferenceDoes) {
    constexpr std::size_t blocks_of_the_fullest_port = 3;
    constexpr std::size_t rows_per_block = 116'480;
    const Stream_Kind kind = GetParam();

    Random_Rows source(kind);
    Mux_Reference reference(kind.rhd_stream_count);
    std::vector<Bytes> buffers;
    while (reference.port_rows[0] <= blocks_of_the_fullest_port * rows_per_block) {
        Bytes& buffer = buffers.emplace_back();
        const std::size_t rows = 1 + source.draw(source.draw(2) == 0 ? 65'536 : 500);
        while (buffer.size() < 16 * rows) {
            if (kind.rows_per_lost_turn != 0 && source.draw(kind.rows_per_lost_turn) != 0) {
                const unsigned stream = source.next_in_turn();
                stream < 4 ? source.append_port_row(buffer, stream) : source.append_rhd_row(buffer);
                continue;
            }
            const std::uint32_t choice = source.draw(1000);
            if (choice < 350) {
                source.append_port_row(buffer, 0);
            } else if (choice < 800) {
                source.append_port_row(buffer, 1 + choice % 3);
            } else if (choice < 999 || source.draw(20) != 0) {
                source.append_rhd_row(buffer);
            } else {
                source.append_unknown_row(buffer);
            }
        }
        if (source.draw(kind.buffers_per_lost_marker) == 0) {
            buffer[16 * source.draw(static_cast<std::uint32_t>(rows))] ^= 0x10;
        }
        if (source.draw(3) == 0) {
            buffer.resize(buffer.size() - source.draw(16));
        }
        if (buffer.size() < 16) {
            buffers.pop_back();
            continue;
        }
        reference.feed_transfer_buffer(buffer);
    }
    buffers.push_back(source.rhd_tail());
    reference.feed_transfer_buffer(buffers.back());
    const std::vector<Rhd_Frame_Copy> expected_rhd_frames = reference.rhd_frames();
    ASSERT_GT(expected_rhd_frames.size(), 100U);
    ASSERT_GT(reference.ports[0].sets.size(), kind.least_channel_sets);
    ASSERT_FALSE(reference.ports[0].err.empty());
    ASSERT_FALSE(reference.row_lines.empty());

    Async_NP_And_RHD_Demux demux;
    std::array<std::shared_ptr<Recording_L2_Listener>, 4> listeners;
    for (unsigned port = 0; port < 4; ++port) {
        listeners[port] = std::make_shared<Recording_L2_Listener>();
        demux.set_L2_CH_Results_Listener(listeners[port], port);
    }
    const auto rhd_listener = std::make_shared<Recording_Rhd_Listener>();
    demux.set_RHD_Results_Listener(rhd_listener);
    demux.set_enabled_RHD_stream_count(static_cast<unsigned>(kind.rhd_stream_count));

    const Log_Capture log;
    const auto output = captured_output([&] {
        demux.start_worker_threads();
        std::thread main_demux_thread([&] { demux.run(); });
        for (const Bytes& buffer : buffers) {
            push_bytes(demux, buffer);
        }
        rhd_listener->wait_for_frames(expected_rhd_frames.size());
        demux.poison_queue();
        main_demux_thread.join();
    });

    std::string expected_out;
    std::string expected_err;
    for (unsigned port = 0; port < 4; ++port) {
        EXPECT_TRUE(listeners[port]->sets == reference.ports[port].sets) << port;
        expected_out += reference.ports[port].out;
        expected_err += reference.ports[port].err;
        EXPECT_EQ(log.count("Number of np " + std::to_string(port) +
                            " rows processed : " + std::to_string(reference.port_rows[port])),
                  1);
    }
    EXPECT_EQ(log.count("Number of rhd rows processed : " + std::to_string(reference.rhd_rows)), 1);
    EXPECT_TRUE(rhd_listener->frames() == expected_rhd_frames);
    EXPECT_EQ(lines_of(output.out, row_beginnings), lines_of(reference.row_lines, row_beginnings));
    EXPECT_EQ(sorted(lines_of(output.out, port_beginnings)), sorted(lines_of(expected_out, port_beginnings)));
    EXPECT_EQ(sorted(lines_of(output.err, port_beginnings)), sorted(lines_of(expected_err, port_beginnings)));
    EXPECT_EQ(lines_of(output.err, {"Buffer size"}).size(),
              static_cast<std::size_t>(reference.incompatible_sizes));
    Lines unknown_ids;
    for (const std::string& text : log.texts()) {
        if (text.starts_with("Unknown demux")) {
            unknown_ids.push_back(text);
        }
    }
    EXPECT_EQ(unknown_ids, reference.unknown_ids);
}

INSTANTIATE_TEST_SUITE_P(Seeds, Random_Demux,
                         testing::Values(Stream_Kind{1, 0, 150'000, 100'000, 2'000},
                                         Stream_Kind{2, 5, 100'000, 40, 500},
                                         Stream_Kind{3, 18, 20'000, 5, 100},
                                         Stream_Kind{4, 16, 150'000, 100'000, 500, 1'000},
                                         Stream_Kind{5, 0, 100'000, 40, 500, 20}));

} // namespace
