// Lending the stream to a self test, in hardware mode.
#include "bist/Self_Test_Stream.h"

#include "Controller_Fixture.h"
#include "Self_Test_Fixture.h"
#include "Self_Test_Recordings.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <stdexcept>
#include <vector>

namespace {

using namespace Pelgar::ORBE;
using namespace Pelgar::ORBE::test;

class Lent_Stream : public Opened_Controller_Fixture {
protected:
    static constexpr unsigned port = 2;
    static constexpr std::uint32_t rhd_streams = 0x1000 + 4 * 0x14;

    Lent_Stream() {
        EXPECT_TRUE(m_controller->pre_init(true));
        m_controller->set_NP_aqustion_listener(m_host, port, false);
        lend();
        m_registers.clear_accesses();
    }

    void lend() {
        m_lent.emplace(Controller_Test_Peer::box(*m_controller), Controller_Test_Peer::stream(*m_controller),
                       port, m_tester);
    }

    // One block of the port, through the pump of the test or of the host.
    template <typename Pump>
    void stream_one_block(Pump&& pump) {
        const auto block = pattern_recording(port);
        constexpr std::ptrdiff_t piece = 1 << 20;
        for (auto at = block.begin(); at != block.end(); at += piece) {
            m_box->queue_stream_read({at, at + piece});
            EXPECT_TRUE(pump());
        }
    }

    void stream_to_host() {
        stream_one_block([&] { return m_controller->pump_data_to_demux(); });
        m_controller->wait_until_delivered();
    }

    std::shared_ptr<Host_Listener> m_host = std::make_shared<Host_Listener>();
    std::shared_ptr<Host_Listener> m_tester = std::make_shared<Host_Listener>();
    std::optional<Self_Test_Stream> m_lent;
};

TEST_F(Lent_Stream, TesterHasEachWholeBlockWhenThePumpReturns) {
    ASSERT_TRUE(m_lent->prepare(""));
    stream_one_block([&] { return m_lent->pump(); });
    EXPECT_EQ(m_tester->ap_sets, 1792U);
    EXPECT_EQ(m_host->ap_sets, 0U);
}

TEST_F(Lent_Stream, PumpAnswersTheBytesThatItMoved) {
    ASSERT_TRUE(m_lent->prepare(""));
    m_box->queue_stream_read(std::vector<std::uint8_t>(std::size_t{1} << 20U));
    EXPECT_EQ(m_lent->pump(), 1U << 20U);
    m_box->queue_stream_read(std::vector<std::uint8_t>(48));
    EXPECT_EQ(m_lent->pump(), 48U);
    EXPECT_EQ(m_lent->pump(), 0U) << "an empty read";
    m_box->queue_stream_error("c2h transfer failed");
    EXPECT_EQ(m_lent->pump(), std::nullopt);
}

TEST_F(Lent_Stream, OnlyTheTestedPortIsEnabledAndTheTriggerGiven) {
    ASSERT_TRUE(m_lent->prepare(""));
    m_registers.set_value(configuration, 0x5C0);
    m_registers.clear_accesses();
    m_lent->enable();
    using Accesses = std::vector<Register_Access>;
    EXPECT_EQ(m_registers.writes(), (Accesses{write_of(configuration, 0x5C4), write_of(configuration, 0x7C4),
                                              write_of(configuration, 0x5C4)}));
    m_registers.clear_accesses();
    m_lent->stop();
    EXPECT_EQ(m_registers.writes(), (Accesses{write_of(configuration, 0x5C0), write_of(rhd_streams, 0)}));
}

TEST_F(Lent_Stream, HostGetsItsListenersBackAndNothingOfTheTest) {
    ASSERT_TRUE(m_lent->prepare(""));
    m_lent->enable();
    stream_one_block([&] { return m_lent->pump(); });
    m_lent->stop();
    m_lent->restore_listeners();
    EXPECT_EQ(printed_by([&] { m_lent.reset(); }).out, "") << "everything has been given back";
    stream_to_host();
    EXPECT_EQ(m_host->ap_sets, 1792U);
    EXPECT_EQ(m_tester->ap_sets, 1792U);
}

TEST_F(Lent_Stream, WhatAnAcquisitionLeftIsNotForTheTest) {
    ASSERT_TRUE(m_lent->prepare(""));
    m_lent.reset();
    auto unfinished = pattern_recording(port);
    unfinished.resize(std::size_t{1} << 20U);
    m_box->queue_stream_read(unfinished);
    ASSERT_TRUE(m_controller->pump_data_to_demux());
    lend();
    stream_one_block([&] { return m_lent->pump(); });
    EXPECT_EQ(m_tester->ap_sets, 1792U) << "one block, and it begins with the test's own data";
    EXPECT_EQ(m_host->ap_sets, 0U);
}

TEST_F(Lent_Stream, EndOfTheObjectStopsAndGivesBack) {
    ASSERT_TRUE(m_lent->prepare(""));
    m_lent->enable();
    m_registers.clear_accesses();
    EXPECT_EQ(printed_by([&] { m_lent.reset(); }).out, "Restoring stream listeners\n");
    EXPECT_EQ(m_registers.writes().size(), 2U);
    stream_to_host();
    EXPECT_EQ(m_host->ap_sets, 1792U);
}

TEST_F(Lent_Stream, UnpreparedStreamIsNotStopped) {
    EXPECT_EQ(printed_by([&] { m_lent.reset(); }).out, "Restoring stream listeners\n");
    EXPECT_TRUE(m_registers.writes().empty());
}

TEST_F(Lent_Stream, RegistersThatFailDoNotKeepTheListeners) {
    ASSERT_TRUE(m_lent->prepare(""));
    m_box->set_write_error("register space lost");
    EXPECT_EQ(text_thrown_by<std::runtime_error>([&] { m_lent->enable(); }), "register space lost");
    EXPECT_EQ(printed_by([&] { m_lent.reset(); }).out, "Restoring stream listeners\n");
    EXPECT_EQ(m_log.count(-2, "a self test's stream cannot be given back : register space lost"), 1);
    stream_to_host();
    EXPECT_EQ(m_host->ap_sets, 1792U);
}

TEST_F(Lent_Stream, PreparingThatFailsHalfWayCanBeTriedAgain) {
    for (int attempt = 0; attempt < 2; ++attempt) {
        m_box->set_write_error("register space lost");
        EXPECT_EQ(text_thrown_by<std::runtime_error>([&] { m_lent->prepare(""); }), "register space lost");
        EXPECT_EQ(m_log.count("End of main demux thread"), attempt + 1) << "the thread has been joined";
        m_lent.reset();
        m_box->clear_write_error();
        lend();
    }
    ASSERT_TRUE(m_lent->prepare(""));
    stream_one_block([&] { return m_lent->pump(); });
    EXPECT_EQ(m_tester->ap_sets, 1792U);
    m_lent.reset();
    m_controller->finalize_stream();
    EXPECT_EQ(m_log.count("End of main demux thread"), 3);
}

TEST_F(Lent_Stream, PumpAfterTheEndOfTheStreamDoesNotHang) {
    ASSERT_TRUE(m_lent->prepare(""));
    m_controller->finalize_stream();
    m_box->queue_stream_read(std::vector<std::uint8_t>(16));
    EXPECT_TRUE(m_lent->pump());
}

TEST_F(Opened_Controller_Fixture, SelfTestsLogWhatTheRegistersThrow) {
    ASSERT_TRUE(m_controller->pre_init(true));
    m_box->set_write_error("register space lost");
    EXPECT_FALSE(m_controller->bist_PSB(0));
    EXPECT_FALSE(m_controller->bist_Signal(0));
    EXPECT_EQ(m_log.count(-2, "Exception caught during bist_PSB : register space lost"), 1);
    EXPECT_EQ(m_log.count(-2, "Exception caught during bist_Signal : register space lost"), 1);
}

TEST_F(Opened_Controller_Fixture, SelfTestsRefuseAStreamThatIsInUse) {
    ASSERT_TRUE(m_controller->pre_init(true));
    m_controller->enable_streaming(false, {}, true, {}, false);
    m_registers.clear_accesses();
    EXPECT_FALSE(m_controller->bist_PSB(0));
    EXPECT_FALSE(m_controller->bist_Signal(0));
    EXPECT_EQ(m_log.count(-2, "bist_PSB needs the stream, which is in use"), 1);
    EXPECT_EQ(m_log.count(-2, "bist_Signal needs the stream, which is in use"), 1);
    EXPECT_TRUE(m_registers.writes().empty());
}

} // namespace
