#include "rows/C_Async_PSB_And_RHD_Demux.h"

#include "probe/CP_L2_CH_Results_Null_Writer.h"
#include "rhd/RHD_Frame_Null_listener.h"

#include "Captured_Output.h"
#include "Demux_Streams.h"
#include "Log_Capture.h"
#include "Recording_Listeners.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace Pelgar::ORBE::demux;
using namespace Pelgar::ORBE::test;
using Lines = std::vector<std::string>;

constexpr Row_Payload flagged = {0x1800, 0x2000, 0x3000, 0x4000, 0x5000, 0x6000, 0x7000};
constexpr Row_Payload unflagged = {0x1000, 0x2000, 0x3000, 0x4000, 0x5000, 0x6000, 0x7000};
constexpr std::size_t rows_per_block = 116'480;

const std::string invalid_buffer_line =
    "Async_PSB_And_RHD_Demux : Main mux data invalid, discarding data packet\n";

std::string discontinuity(unsigned id, unsigned row, unsigned previous, unsigned current) {
    return "Possible demux row counter disconitinuty for demux ch : " + std::to_string(id) +
           " at row : " + std::to_string(row) + ", prev value : " + std::to_string(previous) +
           ", current value : " + std::to_string(current) + "\n";
}

std::string discarded(unsigned port) {
    return "Resync to super frame in progress. Row discarded. Demux ch : " + std::to_string(port) + "\n";
}

// The demultiplexer on the test's own thread, without its worker threads. What is pushed is not part of the
// output.
class Main_Demux : public testing::Test {
protected:
    Main_Demux() {
        captured_output([this] { m_demux.emplace(); });
    }

    void push(const Bytes& bytes) {
        captured_output([&] { push_bytes(*m_demux, bytes); });
    }

    void push_many(const Bytes& bytes) {
        captured_output([&] { push_in_full_buffers(*m_demux, bytes); });
    }

    // Runs up to the poison. `out` comes without the line on the first element.
    Captured_Output run() {
        captured_output([this] { m_demux->poison_queue(); });
        Captured_Output output = captured_output([this] { m_demux->run(); });
        const std::string first_line = "Elements in main demux queue: ";
        if (output.out.starts_with(first_line)) {
            output.out.erase(0, output.out.find('\n') + 1);
        }
        return output;
    }

    // The row counts that `run` logs at its end: ports 0 to 3 and RHD.
    std::array<int, 5> logged_row_counts(const Log_Capture& log) {
        const auto texts = log.texts();
        std::array<int, 5> counts{};
        for (std::size_t i = 0; i < counts.size(); ++i) {
            const std::string& text = texts.at(texts.size() - 6 + i);
            counts[i] = std::stoi(text.substr(text.rfind(' ')));
        }
        return counts;
    }

    std::optional<Async_NP_And_RHD_Demux> m_demux;
    Row_Counters m_counters;
};

TEST_F(Main_Demux, FirstElementIsAnnouncedOnce) {
    push(Bytes(40));
    push(Bytes(16));
    captured_output([this] { m_demux->poison_queue(); });
    const auto output = captured_output([this] { m_demux->run(); });
    EXPECT_EQ(output.out, "Elements in main demux queue: 3, packet size : 40\n" + invalid_buffer_line +
                              invalid_buffer_line);
    EXPECT_EQ(output.err, "Buffer size incompatible\n");
}

TEST_F(Main_Demux, PoisonAsFirstElementIsAnnouncedToo) {
    captured_output([this] { m_demux->poison_queue(); });
    const auto output = captured_output([this] { m_demux->run(); });
    EXPECT_EQ(output.out, "Elements in main demux queue: 1, packet size : 0\n");
    EXPECT_EQ(output.err, "");
}

TEST_F(Main_Demux, EndOfTheRunIsLoggedInOrder) {
    Bytes bytes;
    m_counters.append(bytes, 1, flagged);
    m_counters.append(bytes, 1, unflagged);
    m_counters.append(bytes, 3, flagged);
    m_counters.append(bytes, 4, unflagged);
    push(bytes);
    const Log_Capture log;
    run();
    EXPECT_EQ(log.texts(), (Lines{"Async_PSB_And_RHD_Demux : Poison packet received (m_main_demux_queue)",
                                  "m_worker_threads already not started", "Number of np 0 rows processed : 0",
                                  "Number of np 1 rows processed : 2", "Number of np 2 rows processed : 0",
                                  "Number of np 3 rows processed : 1", "Number of rhd rows processed : 1",
                                  "End of main demux thread"}));
    for (const std::string& text : log.texts()) {
        EXPECT_EQ(log.count(0, text), 1) << text;
    }
    EXPECT_TRUE(log.has_scope(0, "poison_queue"));
    EXPECT_TRUE(log.has_scope(0, "run"));
}

TEST_F(Main_Demux, IsDoneOnlyAfterTheRun) {
    EXPECT_FALSE(m_demux->is_done());
    run();
    EXPECT_TRUE(m_demux->is_done());
}

TEST_F(Main_Demux, ElementsBehindThePoisonAreStillProcessed) {
    captured_output([this] { m_demux->poison_queue(); });
    push(Bytes(16));
    const Log_Capture log;
    const auto output = run();
    EXPECT_EQ(output.out, invalid_buffer_line);
    EXPECT_EQ(log.count("Async_PSB_And_RHD_Demux : Poison packet received (m_main_demux_queue)"), 2);
}

TEST_F(Main_Demux, ABufferShorterThanARowThrowsAndStays) {
    push(Bytes(15));
    for (int attempt = 0; attempt < 2; ++attempt) {
        try {
            captured_output([&] {
                try {
                    m_demux->run();
                    ADD_FAILURE() << "no exception";
                } catch (const std::runtime_error& error) {
                    EXPECT_STREQ(error.what(), "Buffer must contain at least 16 byte");
                }
            });
        } catch (...) {
            FAIL() << "not a runtime error";
        }
    }
    EXPECT_FALSE(m_demux->is_done());
}

TEST(Main_Demux_Short_Buffers, OneToFifteenBytesThrow) {
    for (std::size_t size = 1; size < 16; ++size) {
        captured_output([size] {
            Async_NP_And_RHD_Demux demux;
            push_bytes(demux, Bytes(size, 0xD0));
            EXPECT_THROW(demux.run(), std::runtime_error) << size;
        });
    }
}

TEST_F(Main_Demux, SixteenBytesAreOneRow) {
    Bytes bytes;
    m_counters.append(bytes, 0, flagged);
    push(bytes);
    const Log_Capture log;
    const auto output = run();
    EXPECT_EQ(output.out, "");
    EXPECT_EQ(output.err, "");
    EXPECT_EQ(logged_row_counts(log), (std::array{1, 0, 0, 0, 0}));
}

TEST_F(Main_Demux, TwentyFourBytesAreAnIncompatibleSizeAndOneRow) {
    Bytes bytes;
    m_counters.append(bytes, 0, flagged);
    m_counters.append(bytes, 0, unflagged);
    bytes.resize(24);
    push(bytes);
    const Log_Capture log;
    const auto output = run();
    EXPECT_EQ(output.out, "");
    EXPECT_EQ(output.err, "Buffer size incompatible\n");
    EXPECT_EQ(logged_row_counts(log), (std::array{1, 0, 0, 0, 0}));
}

TEST_F(Main_Demux, AFullBufferIs65536Rows) {
    Bytes bytes;
    for (std::size_t row = 0; row < 65'536; ++row) {
        m_counters.append(bytes, 2, flagged);
    }
    push(bytes);
    const Log_Capture log;
    EXPECT_EQ(run().out, "");
    EXPECT_EQ(logged_row_counts(log), (std::array{0, 0, 65'536, 0, 0}));
}

TEST_F(Main_Demux, ABufferWhoseFirstRowHasNoMarkerIsDiscardedWithItsLine) {
    Bytes bytes;
    append_row(bytes, 0, 9, flagged);
    append_row(bytes, 0, 0, flagged);
    for (unsigned marker = 0; marker < 16; ++marker) {
        if (marker != 0xD) {
            bytes[0] = static_cast<std::uint8_t>(marker << 4);
            push(bytes);
        }
    }
    bytes.clear();
    append_row(bytes, 0, 0, flagged);
    append_row(bytes, 0, 9, flagged);
    push(bytes);
    const Log_Capture log;
    std::string expected;
    for (int i = 0; i < 15; ++i) {
        expected += invalid_buffer_line;
    }
    EXPECT_EQ(run().out, expected + discontinuity(0, 1, 0, 9));
    EXPECT_EQ(logged_row_counts(log), (std::array{2, 0, 0, 0, 0}));
}

TEST_F(Main_Demux, ARowWithoutMarkerSilentlyDropsTheRestOfItsBuffer) {
    Bytes bytes;
    append_row(bytes, 0, 0, flagged);
    append_row(bytes, 0, 1, unflagged);
    append_row(bytes, 0, 77, unflagged);
    bytes[2 * 16] = 0xC0;
    append_row(bytes, 0, 99, unflagged);
    append_row(bytes, 1, 99, unflagged);
    push(bytes);
    bytes.clear();
    append_row(bytes, 0, 2, unflagged);
    append_row(bytes, 0, 4, unflagged);
    push(bytes);
    const Log_Capture log;
    const auto output = run();
    EXPECT_EQ(output.out, discontinuity(0, 3, 2, 4));
    EXPECT_EQ(output.err, "");
    EXPECT_EQ(logged_row_counts(log), (std::array{4, 0, 0, 0, 0}));
}

TEST_F(Main_Demux, EveryStreamBeginsWithCounterZero) {
    Bytes bytes;
    for (unsigned id = 0; id < 16; ++id) {
        append_row(bytes, id, 0, flagged);
    }
    push(bytes);
    EXPECT_EQ(run().out, "");
}

TEST_F(Main_Demux, AnotherFirstCounterIsADiscontinuityInEveryStream) {
    Bytes bytes;
    std::string expected;
    for (unsigned id = 0; id < 16; ++id) {
        append_row(bytes, id, 1 + id, flagged);
        expected += discontinuity(id, id, 255, 1 + id);
    }
    push(bytes);
    EXPECT_EQ(run().out, expected);
}

TEST_F(Main_Demux, CounterGoesOnFrom255To0) {
    Bytes bytes;
    for (unsigned row = 0; row < 600; ++row) {
        append_row(bytes, 4, row & 0xFF, unflagged);
    }
    push(bytes);
    EXPECT_EQ(run().out, "");
}

TEST_F(Main_Demux, CountersRunWithinAStreamAndAcrossBuffers) {
    Bytes bytes;
    for (unsigned row = 0; row < 10; ++row) {
        append_row(bytes, 0, row, flagged);
        append_row(bytes, 3, row, flagged);
    }
    push(bytes);
    bytes.clear();
    append_row(bytes, 3, 10, flagged);
    append_row(bytes, 0, 10, flagged);
    append_row(bytes, 0, 12, flagged);
    push(bytes);
    EXPECT_EQ(run().out, discontinuity(0, 22, 10, 12));
}

TEST_F(Main_Demux, ADiscontinuityIsReportedOnceAndTheRowIsKept) {
    Bytes bytes;
    append_row(bytes, 2, 0, flagged);
    append_row(bytes, 2, 200, unflagged);
    append_row(bytes, 2, 201, unflagged);
    append_row(bytes, 2, 201, unflagged);
    push(bytes);
    const Log_Capture log;
    EXPECT_EQ(run().out, discontinuity(2, 1, 0, 200) + discontinuity(2, 3, 201, 201));
    EXPECT_EQ(logged_row_counts(log), (std::array{0, 0, 4, 0, 0}));
}

TEST_F(Main_Demux, APortDropsRowsUntilTheFirstFlaggedOne) {
    Bytes bytes;
    std::string expected;
    for (unsigned port = 0; port < 4; ++port) {
        m_counters.append(bytes, port, unflagged);
        m_counters.append(bytes, port, {0xF7FF, 0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF});
        m_counters.append(bytes, port, {0x0800, 0, 0, 0, 0, 0, 0});
        m_counters.append(bytes, port, unflagged);
        expected += discarded(port) + discarded(port);
    }
    push(bytes);
    const Log_Capture log;
    const auto output = run();
    EXPECT_EQ(output.out, expected);
    EXPECT_EQ(output.err, "");
    EXPECT_EQ(logged_row_counts(log), (std::array{2, 2, 2, 2, 0}));
}

TEST_F(Main_Demux, ADiscardedRowCountsInTheRowIndexAndTheCounter) {
    Bytes bytes;
    append_row(bytes, 0, 0, unflagged);
    append_row(bytes, 0, 1, unflagged);
    append_row(bytes, 0, 3, unflagged);
    push(bytes);
    EXPECT_EQ(run().out, discarded(0) + discarded(0) + discontinuity(0, 2, 1, 3) + discarded(0));
}

TEST_F(Main_Demux, AFullBlockWaitsForTheNextRow) {
    Bytes bytes;
    for (std::size_t row = 0; row < rows_per_block; ++row) {
        m_counters.append(bytes, 1, row == 0 ? flagged : unflagged);
    }
    push_many(bytes);
    const Log_Capture log;
    EXPECT_EQ(run().out, "");
    EXPECT_EQ(logged_row_counts(log), (std::array{0, 116'480, 0, 0, 0}));
}

TEST_F(Main_Demux, TheNextRowHandsTheBlockOverWhateverItCarries) {
    Bytes bytes;
    for (std::size_t row = 0; row < rows_per_block; ++row) {
        m_counters.append(bytes, 1, row == 0 ? flagged : unflagged);
    }
    m_counters.append(bytes, 1, unflagged);
    m_counters.append(bytes, 1, unflagged);
    m_counters.append(bytes, 1, flagged);
    push_many(bytes);
    const Log_Capture log;
    EXPECT_EQ(run().out, "NP worker 1 element count high_water_mark : 1\n" + discarded(1) + discarded(1));
    EXPECT_EQ(logged_row_counts(log), (std::array{0, 116'481, 0, 0, 0}));
}

TEST_F(Main_Demux, BlockQueueMarksRiseAPortAndOnlyOnce) {
    Bytes bytes;
    for (std::size_t row = 0; row < 2 * rows_per_block + 1; ++row) {
        m_counters.append(bytes, 0, flagged);
    }
    for (std::size_t row = 0; row < rows_per_block + 1; ++row) {
        m_counters.append(bytes, 3, flagged);
    }
    push_many(bytes);
    EXPECT_EQ(run().out, "NP worker 0 element count high_water_mark : 1\n"
                         "NP worker 0 element count high_water_mark : 2\n"
                         "NP worker 3 element count high_water_mark : 1\n");

    // The marks belong to the process: another demultiplexer starts from them.
    captured_output([this] {
        m_demux.reset();
        m_demux.emplace();
    });
    push_many(bytes);
    EXPECT_EQ(run().out, "");
}

TEST_F(Main_Demux, UnknownIdsAreLoggedAndCountAsRows) {
    Bytes bytes;
    for (unsigned id = 5; id < 16; ++id) {
        append_row(bytes, id, 0, flagged);
    }
    append_row(bytes, 5, 1, flagged);
    append_row(bytes, 5, 3, flagged);
    push(bytes);
    const Log_Capture log;
    EXPECT_EQ(run().out, discontinuity(5, 12, 1, 3));
    EXPECT_EQ(log.count(-1, "Unknown demux stream id : 5 "), 3);
    for (const char* id : {"6", "7", "8", "9", "a", "b", "c", "d", "e", "f"}) {
        EXPECT_EQ(log.count(-1, std::string("Unknown demux stream id : ") + id + " "), 1);
    }
    EXPECT_EQ(logged_row_counts(log), (std::array{0, 0, 0, 0, 0}));
}

TEST_F(Main_Demux, MainQueueMarkRisesWithThePushesOfTheProcess) {
    const auto output = captured_output([this] {
        push_bytes(*m_demux, Bytes(16));
        push_bytes(*m_demux, Bytes(16));
        m_demux->poison_queue();
    });
    EXPECT_EQ(output.out, "main_demux_queue_high_water_mark : 1\n"
                          "main_demux_queue_high_water_mark : 2\n"
                          "main_demux_queue_high_water_mark : 3\n");
    EXPECT_EQ(output.err, "");
    captured_output([this] { m_demux->run(); });
    const auto again = captured_output([] {
        Async_NP_And_RHD_Demux other;
        for (int i = 0; i < 4; ++i) {
            push_bytes(other, Bytes(16));
        }
    });
    EXPECT_EQ(again.out, "main_demux_queue_high_water_mark : 4\n");
}

TEST_F(Main_Demux, PushKeepsACopy) {
    const auto buffer = std::make_unique<Main_mux_transfer_buffer_wrapper>();
    buffer->data[0] = 0xD4;
    buffer->size = 16;
    captured_output([&] { m_demux->push_xfer_buffer_to_queue(*buffer); });
    buffer->data[0] = 0;
    buffer->size = 0;
    const Log_Capture log;
    EXPECT_EQ(run().out, "");
    EXPECT_EQ(logged_row_counts(log), (std::array{0, 0, 0, 0, 1}));
}

TEST_F(Main_Demux, IllegalPortIndexIsRefused) {
    const auto listener = std::make_shared<CP_L2_CH_Results_Null_Writer>();
    for (const unsigned port : {4U, 5U, 0xFFFFFFFFU}) {
        try {
            m_demux->set_L2_CH_Results_Listener(listener, port);
            ADD_FAILURE() << port;
        } catch (const std::runtime_error& error) {
            EXPECT_STREQ(error.what(), "illegal np demux index inside "
                                       "Async_PSB_And_RHD_Demux::set_L2_CH_Results_Listener");
        }
        EXPECT_THROW(m_demux->get_L2_CH_Results_Listener(port), std::out_of_range);
    }
}

TEST_F(Main_Demux, EveryPortHasItsOwnListenerHeldWeakly) {
    std::array<std::shared_ptr<CP_L2_CH_Results_Null_Writer>, 4> listeners;
    for (unsigned port = 0; port < 4; ++port) {
        EXPECT_TRUE(m_demux->get_L2_CH_Results_Listener(port).expired());
        listeners[port] = std::make_shared<CP_L2_CH_Results_Null_Writer>();
        m_demux->set_L2_CH_Results_Listener(listeners[port], port);
    }
    for (unsigned port = 0; port < 4; ++port) {
        EXPECT_EQ(m_demux->get_L2_CH_Results_Listener(port).lock(), listeners[port]);
        EXPECT_EQ(listeners[port].use_count(), 1);
    }
}

TEST_F(Main_Demux, RhdListenerIsHeldWeakly) {
    EXPECT_TRUE(m_demux->get_RHD_Results_Listener().expired());
    const auto listener = std::make_shared<RHD_Frame_Null_listener>();
    m_demux->set_RHD_Results_Listener(listener);
    EXPECT_EQ(m_demux->get_RHD_Results_Listener().lock(), listener);
    EXPECT_EQ(listener.use_count(), 1);
}

TEST_F(Main_Demux, ResyncReachesEveryPort) {
    const Log_Capture log;
    const auto output = captured_output([this] { m_demux->signal_to_resync(); });
    EXPECT_EQ(output.out, "reset_and_resync_counters requested.\nreset_and_resync_counters requested.\n"
                          "reset_and_resync_counters requested.\nreset_and_resync_counters requested.\n");
    EXPECT_TRUE(log.has_scope(0, "signal_to_resync"));
}

TEST_F(Main_Demux, CountsAreZeroInTheBeginning) {
    EXPECT_EQ(m_demux->get_total_processed_SF_count(), 0U);
    EXPECT_EQ(m_demux->get_total_processed_RHD_frame_count(), 0U);
}

TEST(Demux_Life, ConstructorAndDestructorOpenTheirScopes) {
    const Log_Capture log;
    captured_output([&] {
        Async_NP_And_RHD_Demux demux;
        EXPECT_TRUE(log.has_scope(0, "Async_NP_And_RHD_Demux"));
        EXPECT_FALSE(log.has_scope(0, "~Async_NP_And_RHD_Demux"));
    });
    EXPECT_TRUE(log.has_scope(0, "~Async_NP_And_RHD_Demux"));
}

TEST(Demux_Life, RawDataFileIsCreatedAndLeftEmpty) {
    for (int round = 0; round < 2; ++round) {
        captured_output([] {
            const Async_NP_And_RHD_Demux demux;
            ASSERT_TRUE(std::filesystem::exists("raw_data.bin"));
            EXPECT_EQ(std::filesystem::file_size("raw_data.bin"), 0U);
        });
        EXPECT_EQ(std::filesystem::file_size("raw_data.bin"), 0U);
    }
}

TEST(Demux_Life, RawDataFileIsNeverEmptied) {
    std::ofstream("raw_data.bin") << "from before";
    captured_output([] { const Async_NP_And_RHD_Demux demux; });
    std::string content;
    std::getline(std::ifstream("raw_data.bin"), content);
    EXPECT_EQ(content, "from before");
}

TEST(Demux_Life, WorkersStartInOrderUnderTheirNames) {
    const Log_Capture log;
    captured_output([] {
        Async_NP_And_RHD_Demux demux;
        demux.start_worker_threads();
        demux.wait_worker_threads_end();
    });
    EXPECT_TRUE(log.has_scope(0, "start_worker_threads"));
    Lines starts;
    for (const std::string& text : log.texts()) {
        if (text.starts_with("Starting ")) {
            starts.push_back(text);
        }
    }
    EXPECT_EQ(starts, (Lines{"Starting NP worker thread NP0", "Starting NP worker thread NP1",
                             "Starting NP worker thread NP2", "Starting NP worker thread NP3",
                             "Starting RHD worker thread : RHD"}));
    EXPECT_EQ(log.count("NP Worker thread started"), 4);
    EXPECT_EQ(log.count("RHD Worker thread started"), 1);
}

TEST(Demux_Life, StartingTwiceStartsOnce) {
    const Log_Capture log;
    captured_output([] {
        Async_NP_And_RHD_Demux demux;
        demux.start_worker_threads();
        demux.start_worker_threads();
        demux.wait_worker_threads_end();
    });
    EXPECT_EQ(log.count("NP Worker thread started"), 4);
    EXPECT_EQ(log.count("RHD Worker thread started"), 1);
}

TEST(Demux_Life, WorkersAreJoinedRhdFirst) {
    Log_Capture log;
    const auto output = captured_output([&] {
        Async_NP_And_RHD_Demux demux;
        demux.start_worker_threads();
        demux.wait_worker_threads_end();
    });
    Lines steps;
    for (const auto& line : log.lines()) {
        if (line.text == "{ poison_queue" || line.text == "{ signal_to_stop" ||
            line.text == "Joining with the threads") {
            steps.push_back(line.text);
        }
    }
    EXPECT_EQ(steps, (Lines{"{ poison_queue", "{ poison_queue", "{ poison_queue", "{ poison_queue",
                            "{ signal_to_stop", "Joining with the threads"}));
    EXPECT_EQ(log.count("NP Worker thread end"), 4);
    EXPECT_EQ(log.count("RHD Worker thread end"), 1);
    Lines joins;
    for (const std::string& text : log.texts()) {
        if (text.starts_with("Joining") || text.starts_with("Main ")) {
            joins.push_back(text);
            EXPECT_EQ(log.count(0, text), 1);
        }
    }
    EXPECT_EQ(joins, (Lines{"Joining with the threads", "Joining with RHD worker", "Joining with NP workers",
                            "Main demux worker threads done"}));
    const auto texts = log.texts();
    EXPECT_LT(std::find(texts.begin(), texts.end(), "RHD Worker thread end"),
              std::find(texts.begin(), texts.end(), "Joining with NP workers"));
    for (const char* name : {"NP0", "NP1", "NP2", "NP3"}) {
        const std::string line = std::string("Worker thread  received poision packet ") + name + "\n";
        EXPECT_NE(output.out.find(line), std::string::npos);
    }
}

TEST(Demux_Life, TheSecondWaitOnlySaysThatNothingRuns) {
    captured_output([] {
        Async_NP_And_RHD_Demux demux;
        demux.start_worker_threads();
        demux.wait_worker_threads_end();
        const Log_Capture log;
        demux.wait_worker_threads_end();
        EXPECT_EQ(log.texts(), Lines{"m_worker_threads already not started"});
        EXPECT_EQ(log.count(0, "m_worker_threads already not started"), 1);
    });
}

TEST(Demux_Life, DestructorEndsWorkersThatStillRun) {
    const Log_Capture log;
    captured_output([] {
        Async_NP_And_RHD_Demux demux;
        demux.start_worker_threads();
    });
    EXPECT_EQ(log.count("NP Worker thread end"), 4);
    EXPECT_EQ(log.count("RHD Worker thread end"), 1);
}

// The whole demultiplexer with all of its threads.
class Running_Demux : public testing::Test {
protected:
    // Pushes the buffers while everything runs, waits for RHD frames, poisons, and joins.
    Captured_Output run(const std::vector<Bytes>& buffers, std::size_t rhd_frame_count) {
        return captured_output([&] {
            m_demux.start_worker_threads();
            std::thread main_demux_thread([this] { m_demux.run(); });
            for (const Bytes& buffer : buffers) {
                push_bytes(m_demux, buffer);
            }
            m_rhd_listener->wait_for_frames(rhd_frame_count);
            m_demux.poison_queue();
            main_demux_thread.join();
        });
    }

    static std::vector<Bytes> in_buffers(const Bytes& bytes) {
        std::vector<Bytes> buffers;
        for (std::size_t at = 0; at < bytes.size(); at += transfer_buffer_capacity) {
            const auto end = std::min(bytes.size(), at + transfer_buffer_capacity);
            buffers.emplace_back(bytes.begin() + static_cast<std::ptrdiff_t>(at),
                                 bytes.begin() + static_cast<std::ptrdiff_t>(end));
        }
        return buffers;
    }

    Async_NP_And_RHD_Demux m_demux;
    std::shared_ptr<Recording_Rhd_Listener> m_rhd_listener = std::make_shared<Recording_Rhd_Listener>();
    Row_Counters m_counters;
};

TEST_F(Running_Demux, ABlockOf1792SuperFramesReachesItsPortsListener) {
    std::array<std::shared_ptr<Recording_L2_Listener>, 4> listeners;
    for (unsigned port = 0; port < 4; ++port) {
        listeners[port] = std::make_shared<Recording_L2_Listener>();
        m_demux.set_L2_CH_Results_Listener(listeners[port], port);
    }
    Bytes bytes;
    for (const Row_Payload& payload : row_payloads(numbered_super_frames(0, 1793))) {
        m_counters.append(bytes, 2, payload);
    }
    run(in_buffers(bytes), 0);
    EXPECT_EQ(listeners[2]->count(Band::AP), 1792U);
    EXPECT_EQ(listeners[2]->count(Band::LFP), 149U);
    EXPECT_TRUE(listeners[0]->sets.empty());
    EXPECT_TRUE(listeners[1]->sets.empty());
    EXPECT_TRUE(listeners[3]->sets.empty());
    EXPECT_EQ(m_demux.get_total_processed_SF_count(), 0U);
}

TEST_F(Running_Demux, AnIncompleteBlockAtTheEndIsDropped) {
    const auto listener = std::make_shared<Recording_L2_Listener>();
    m_demux.set_L2_CH_Results_Listener(listener, 0);
    Bytes bytes;
    for (const Row_Payload& payload : row_payloads(numbered_super_frames(0, 1792))) {
        m_counters.append(bytes, 0, payload);
    }
    run(in_buffers(bytes), 0);
    EXPECT_TRUE(listener->sets.empty());
}

TEST_F(Running_Demux, RhdFramesReachTheListener) {
    m_demux.set_enabled_RHD_stream_count(5);
    m_demux.set_RHD_Results_Listener(m_rhd_listener);
    Words words;
    for (std::uint32_t frame = 0; frame < 70; ++frame) {
        const Words next = rhd_words(numbered_rhd_frame(frame, 5), 5);
        words.insert(words.end(), next.begin(), next.end());
    }
    ASSERT_EQ(words.size() % 7, 0U);
    Bytes bytes;
    for (const Row_Payload& payload : row_payloads(words)) {
        m_counters.append(bytes, 4, payload);
    }
    const Log_Capture log;
    run({bytes}, 70);
    const auto frames = m_rhd_listener->frames();
    ASSERT_EQ(frames.size(), 70U);
    for (std::uint32_t frame = 0; frame < 70; ++frame) {
        EXPECT_EQ(frames[frame], numbered_rhd_frame(frame, 5));
    }
    EXPECT_EQ(m_demux.get_total_processed_RHD_frame_count(), 70U);
    EXPECT_EQ(log.count("Number of rhd rows processed : " + std::to_string(words.size() / 7)), 1);
}

// The words of a buffer are all forwarded when the buffer ends early.
TEST_F(Running_Demux, RhdRowsInFrontOfARowWithoutMarkerAreForwarded) {
    m_demux.set_RHD_Results_Listener(m_rhd_listener);
    Words words = rhd_words(numbered_rhd_frame(1, 0), 0);
    words.push_back(0x2A53);
    Bytes bytes;
    for (const Row_Payload& payload : row_payloads(words)) {
        m_counters.append(bytes, 4, payload);
    }
    bytes.resize(bytes.size() + 16);
    run({bytes}, 1);
    EXPECT_EQ(m_rhd_listener->frames().at(0), numbered_rhd_frame(1, 0));
}

TEST_F(Running_Demux, ResyncWhileEverythingRuns) {
    const auto listener = std::make_shared<Recording_L2_Listener>();
    m_demux.set_L2_CH_Results_Listener(listener, 1);
    Bytes bytes;
    for (const Row_Payload& payload : row_payloads(numbered_super_frames(0, 1793))) {
        m_counters.append(bytes, 1, payload);
    }
    captured_output([&] {
        m_demux.start_worker_threads();
        std::thread main_demux_thread([this] { m_demux.run(); });
        for (const Bytes& buffer : in_buffers(bytes)) {
            push_bytes(m_demux, buffer);
            m_demux.signal_to_resync();
            m_demux.set_enabled_RHD_stream_count(2);
            m_demux.set_L2_CH_Results_Listener(listener, 1);
            m_demux.get_total_processed_RHD_frame_count();
            m_demux.get_total_processed_SF_count();
        }
        m_demux.poison_queue();
        main_demux_thread.join();
    });
    EXPECT_EQ(listener->count(Band::AP), 1792U);
}

TEST_F(Running_Demux, WaitForDeliveryReturnsWhenTheListenersHaveTheWholeBlocks) {
    const auto listener = std::make_shared<Recording_L2_Listener>();
    m_demux.set_L2_CH_Results_Listener(listener, 3);
    Bytes bytes;
    for (const Row_Payload& payload : row_payloads(numbered_super_frames(0, 2 * 1792 + 1))) {
        m_counters.append(bytes, 3, payload);
    }
    captured_output([&] {
        m_demux.start_worker_threads();
        std::thread main_demux_thread([this] { m_demux.run(); });
        for (const Bytes& buffer : in_buffers(bytes)) {
            push_bytes(m_demux, buffer);
        }
        m_demux.wait_until_delivered();
        EXPECT_EQ(listener->count(Band::AP), 2U * 1792U);
        m_demux.poison_queue();
        main_demux_thread.join();
    });
}

TEST_F(Running_Demux, DroppedUnfinishedBlocksNeverReachAListener) {
    const auto listener = std::make_shared<Recording_L2_Listener>();
    m_demux.set_L2_CH_Results_Listener(listener, 0);
    Bytes before;
    for (const Row_Payload& payload : row_payloads(numbered_super_frames(0, 100))) {
        m_counters.append(before, 0, payload);
    }
    before.resize(before.size() - 16 * 5); // cut within a super frame
    Bytes after;
    for (const Row_Payload& payload : row_payloads(numbered_super_frames(13 * 100, 1793))) {
        m_counters.append(after, 0, payload);
    }
    captured_output([&] {
        m_demux.start_worker_threads();
        std::thread main_demux_thread([this] { m_demux.run(); });
        for (const Bytes& buffer : in_buffers(before)) {
            push_bytes(m_demux, buffer);
        }
        m_demux.wait_until_delivered();
        m_demux.drop_unfinished_blocks();
        for (const Bytes& buffer : in_buffers(after)) {
            push_bytes(m_demux, buffer);
        }
        m_demux.poison_queue();
        main_demux_thread.join();
    });
    EXPECT_EQ(listener->count(Band::AP), 1792U) << "a whole block of what came after";
}

TEST_F(Running_Demux, RHDFramesAreDeliveredByTheWaitAndHalfOnesDropped) {
    const auto listener = std::make_shared<Recording_Rhd_Listener>();
    m_demux.set_RHD_Results_Listener(listener);
    // Three rows hold a frame of 20 words and the first word of another.
    const auto rows_of = [&](std::uint32_t seed) {
        Words words = rhd_words(numbered_rhd_frame(seed, 0), 0);
        words.push_back(words.front());
        Bytes bytes;
        for (const Row_Payload& payload : row_payloads(words)) {
            m_counters.append(bytes, 4, payload);
        }
        return bytes;
    };
    captured_output([&] {
        m_demux.start_worker_threads();
        std::thread main_demux_thread([this] { m_demux.run(); });
        for (std::uint32_t seed = 1; seed <= 20; ++seed) {
            push_bytes(m_demux, rows_of(seed));
            m_demux.wait_until_delivered();
            EXPECT_EQ(listener->frames().size(), seed);
            m_demux.drop_unfinished_blocks();
        }
        m_demux.poison_queue();
        main_demux_thread.join();
    });
    const auto frames = listener->frames();
    ASSERT_EQ(frames.size(), 20U);
    for (std::uint32_t seed = 1; seed <= 20; ++seed) {
        EXPECT_EQ(frames[seed - 1], numbered_rhd_frame(seed, 0));
    }
    EXPECT_EQ(m_demux.get_total_processed_RHD_frame_count(), 20U);
}

TEST_F(Running_Demux, CanBeStartedAnewAfterItHasEnded) {
    const auto np_listener = std::make_shared<Recording_L2_Listener>();
    const auto rhd_listener = std::make_shared<Recording_Rhd_Listener>();
    m_demux.set_L2_CH_Results_Listener(np_listener, 2);
    m_demux.set_RHD_Results_Listener(rhd_listener);
    Bytes bytes;
    for (const Row_Payload& payload : row_payloads(numbered_super_frames(0, 1793))) {
        m_counters.append(bytes, 2, payload);
    }
    for (const Row_Payload& payload : row_payloads(rhd_words(numbered_rhd_frame(9, 0), 0))) {
        m_counters.append(bytes, 4, payload);
    }
    const auto output = captured_output([&] {
        for (int run = 0; run < 3; ++run) {
            m_demux.start_worker_threads();
            EXPECT_FALSE(m_demux.is_done());
            std::thread main_demux_thread([this] { m_demux.run(); });
            if (run == 2) {
                for (const Bytes& buffer : in_buffers(bytes)) {
                    push_bytes(m_demux, buffer);
                }
                m_demux.wait_until_delivered();
            }
            m_demux.poison_queue();
            main_demux_thread.join();
            EXPECT_TRUE(m_demux.is_done());
        }
    });
    EXPECT_EQ(np_listener->count(Band::AP), 1792U);
    ASSERT_EQ(rhd_listener->frames().size(), 1U);
    EXPECT_EQ(rhd_listener->frames()[0], numbered_rhd_frame(9, 0));
}

} // namespace
