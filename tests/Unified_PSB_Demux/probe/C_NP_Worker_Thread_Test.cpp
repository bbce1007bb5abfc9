#include "probe/C_NP_Worker_Thread.h"

#include "probe/CP_L1_ADC_TO_Channel.h"
#include "probe/CP_L2_CH_Results_Null_Writer.h"

#include "Captured_Output.h"
#include "Demux_Streams.h"
#include "Log_Capture.h"
#include "Recording_Listeners.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

namespace {

using namespace Pelgar::ORBE::demux;
using namespace Pelgar::ORBE::test;
using Lines = std::vector<std::string>;

std::unique_ptr<NP_Block_Buffer> block_of(const Bytes& bytes) {
    auto block = std::make_unique<NP_Block_Buffer>();
    std::copy(bytes.begin(), bytes.end(), block->data);
    block->fill = static_cast<std::uint32_t>(bytes.size());
    return block;
}

class C_NP_Worker_Thread_Test : public testing::Test {
protected:
    C_NP_Worker_Thread_Test() {
        auto stage = std::make_unique<Recording_L1_Stage>();
        m_stage = stage.get();
        m_worker = std::make_unique<C_NP_Worker_Thread>(std::move(stage));
    }

    // Runs the worker through everything that is queued and the poison.
    Captured_Output run(const std::string& name = "NP2") {
        return captured_output([&] {
            m_worker->poison_queue();
            m_worker->start(name);
            m_worker->join();
        });
    }

    std::unique_ptr<C_NP_Worker_Thread> m_worker;
    Recording_L1_Stage* m_stage = nullptr;
};

TEST_F(C_NP_Worker_Thread_Test, PoisonEndsTheThreadWithItsLines) {
    const Log_Capture log;
    const auto output = run();
    EXPECT_EQ(output.out, "Worker thread  received poision packet NP2\n"
                          "NP2 worker, queue element count : 0\n");
    EXPECT_EQ(output.err, "");
    EXPECT_EQ(log.texts(),
              (Lines{"Starting NP worker thread NP2", "NP Worker thread started", "NP Worker thread end"}));
    EXPECT_EQ(log.count(0, "Starting NP worker thread NP2"), 1);
    EXPECT_EQ(log.count(0, "NP Worker thread started"), 1);
    EXPECT_EQ(log.count(0, "NP Worker thread end"), 1);
    EXPECT_TRUE(log.has_scope(0, "poison_queue"));
}

TEST_F(C_NP_Worker_Thread_Test, LogLinesNameTheSourceFile) {
    const Log_Capture log;
    run();
    for (const auto& line : log.lines()) {
        EXPECT_EQ(line.file, "C_NP_Worker_Thread.cpp") << line.text;
    }
}

TEST_F(C_NP_Worker_Thread_Test, DecodesTheFilledPartOfEveryBlockInOrder) {
    EXPECT_EQ(m_worker->push_block(*block_of(numbered_super_frames(0, 2))), 1U);
    EXPECT_EQ(m_worker->push_block(*block_of(numbered_super_frames(26, 1))), 2U);
    const auto output = run();
    EXPECT_EQ(output.err, "");
    ASSERT_EQ(m_stage->frames.size(), 39U);
    for (std::uint32_t frame = 0; frame < 39; ++frame) {
        EXPECT_EQ(m_stage->frames[frame], numbered_frame(frame));
    }
}

TEST_F(C_NP_Worker_Thread_Test, TellsTheStageWhatIsMissingInFrontOfABlock) {
    m_worker->push_block(*block_of(numbered_super_frames(0, 2)));
    const auto behind_loss = block_of(numbered_super_frames(13 * 1000, 1));
    behind_loss->lost_before = 998;
    m_worker->push_block(*behind_loss);
    m_worker->push_block(*block_of(numbered_super_frames(13 * 1001, 1)));
    run();
    EXPECT_EQ(m_stage->frames.size(), 52U);
    EXPECT_EQ(m_stage->skips, (std::vector<Recording_L1_Stage::Skip>{{26, 998}}));
}

TEST_F(C_NP_Worker_Thread_Test, HasRoomUpToTheLimitOfItsQueueAndAgainWhenThatIsHalfEmpty) {
    m_worker->set_queue_limit(2);
    const auto block = block_of(numbered_super_frames(0, 1));
    for (int i = 0; i < 2; ++i) {
        EXPECT_TRUE(m_worker->has_room());
        m_worker->push_block(*block);
    }
    EXPECT_FALSE(m_worker->has_room());
    run();
    EXPECT_TRUE(m_worker->has_room());
}

TEST_F(C_NP_Worker_Thread_Test, PushKeepsACopy) {
    const auto block = block_of(numbered_super_frames(0, 1));
    m_worker->push_block(*block);
    block->fill = 0;
    block->data[1] = 0;
    run();
    EXPECT_EQ(m_stage->frames.size(), 13U);
}

TEST_F(C_NP_Worker_Thread_Test, QueueCountIsPrintedWithTheFirstAndEvery32ndBlock) {
    const auto block = block_of(numbered_super_frames(0, 1));
    for (int i = 0; i < 34; ++i) {
        m_worker->push_block(*block);
    }
    EXPECT_EQ(run("NP0").out, "NP0 worker, queue element count : 34\n"
                              "NP0 worker, queue element count : 2\n"
                              "Worker thread  received poision packet NP0\n");
}

TEST_F(C_NP_Worker_Thread_Test, BlocksBehindThePoisonStay) {
    m_worker->poison_queue();
    m_worker->push_block(*block_of(numbered_super_frames(0, 1)));
    EXPECT_EQ(run().out, "Worker thread  received poision packet NP2\n"
                         "NP2 worker, queue element count : 2\n");
    EXPECT_TRUE(m_stage->frames.empty());
}

TEST_F(C_NP_Worker_Thread_Test, AThreadThatIsStartedAfterThePoisonEndsAtOnce) {
    run();
    const Log_Capture log;
    m_worker->push_block(*block_of(numbered_super_frames(0, 1)));
    const auto output = run();
    EXPECT_EQ(output.out, "");
    EXPECT_EQ(log.texts(),
              (Lines{"Starting NP worker thread NP2", "NP Worker thread started", "NP Worker thread end"}));
    EXPECT_TRUE(m_stage->frames.empty());
}

TEST_F(C_NP_Worker_Thread_Test, ABlockOfWrongSizeIsReportedAndTheNextOneDecoded) {
    m_worker->push_block(*block_of(Bytes(909)));
    m_worker->push_block(*block_of(numbered_super_frames(0, 1)));
    EXPECT_EQ(run().err, "Buffer size should contain at least (13 * 35) = 455 words\n");
    EXPECT_EQ(m_stage->frames.size(), 13U);
}

TEST_F(C_NP_Worker_Thread_Test, ResyncReachesTheStage) {
    m_worker->resync();
    EXPECT_EQ(m_stage->resync_count, 1);
}

TEST_F(C_NP_Worker_Thread_Test, ListenerIsOnlyForTheOwnKindOfStage) {
    const auto listener = std::make_shared<CP_L2_CH_Results_Null_Writer>();
    m_worker->set_l2_listener(listener);
    EXPECT_EQ(m_worker->get_l2_listener().lock(), nullptr);
    EXPECT_EQ(listener.use_count(), 1);

    C_NP_Worker_Thread own;
    EXPECT_EQ(own.get_l2_listener().lock(), nullptr);
    own.set_l2_listener(listener);
    EXPECT_EQ(own.get_l2_listener().lock(), listener);
    EXPECT_EQ(listener.use_count(), 1);
}

TEST_F(C_NP_Worker_Thread_Test, BlockInputCountsNoSyncPatterns) {
    m_worker->push_block(*block_of(numbered_super_frames(0, 1)));
    run();
    EXPECT_EQ(m_worker->get_sync_pattern_count(), 0U);
}

TEST_F(C_NP_Worker_Thread_Test, DestructorEndsARunningThread) {
    const Log_Capture log;
    captured_output([&] {
        m_worker->start("NP1");
        m_worker.reset();
    });
    EXPECT_EQ(log.count("NP Worker thread end"), 1);
}

TEST(C_NP_Worker_Thread_Channels, TheStageDeliversToTheListener) {
    const auto listener = std::make_shared<Recording_L2_Listener>();
    C_NP_Worker_Thread worker;
    worker.set_l2_listener(listener);
    worker.push_block(*block_of(numbered_super_frames(0, 13)));
    worker.poison_queue();
    const auto output = captured_output([&] {
        worker.start("NP3");
        worker.join();
    });
    EXPECT_EQ(output.err, "");
    EXPECT_EQ(listener->count(Band::AP), 13U);
    EXPECT_EQ(listener->count(Band::LFP), 1U);
}

TEST(C_NP_Worker_Thread_Channels, ResyncPrintsTheStagesLine) {
    C_NP_Worker_Thread worker;
    EXPECT_EQ(captured_output([&] { worker.resync(); }).out, "reset_and_resync_counters requested.\n");
}

// A stage whose listener gives up on some frames.
class Throwing_Stage : public Recording_L1_Stage {
public:
    void publish_adc_data(const std::uint16_t (&adc)[adc_frame_length]) override {
        Recording_L1_Stage::publish_adc_data(adc);
        if (frames.size() == 5) {
            throw std::runtime_error("disk full, 100% used");
        }
        if (frames.size() == 10) {
            throw 42;
        }
    }
};

TEST(C_NP_Worker_Thread_Exceptions, AnExceptionIsLoggedAndTheNextBlockDecoded) {
    auto stage = std::make_unique<Throwing_Stage>();
    const Throwing_Stage& recorded = *stage;
    C_NP_Worker_Thread worker(std::move(stage));
    for (int i = 0; i < 3; ++i) {
        worker.push_block(*block_of(numbered_super_frames(0, 1)));
    }
    worker.poison_queue();
    const Log_Capture log;
    const auto output = captured_output([&] {
        worker.start("NP0");
        worker.join();
    });
    EXPECT_EQ(log.count(-2, "NP worker NP0 : disk full, 100% used"), 1);
    EXPECT_EQ(log.count(-2, "NP worker NP0 : unknown exception"), 1);
    EXPECT_EQ(recorded.frames.size(), 5U + 5U + 13U);
    EXPECT_EQ(output.out, "NP0 worker, queue element count : 3\n"
                          "Worker thread  received poision packet NP0\n");
}

} // namespace
