// Who gets what the stream delivers.
#include "Counting_RHD_Listener.h"
#include "Hardware_Streaming_Fixture.h"

#include "generator/Recording_Generator.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace Pelgar::ORBE;
using namespace Pelgar::ORBE::test;

class Counting_Listener : public demux::I_L2_Demux_CH_Results {
public:
    void publish_ap_ch_data(std::uint16_t (&values)[384]) override {
        ++ap_sets;
        sum += values[0];
    }

    void publish_lp_ch_data(std::uint16_t (&)[384]) override { ++lfp_sets; }

    std::atomic<unsigned> ap_sets{0};
    std::atomic<unsigned> lfp_sets{0};
    std::atomic<std::uint64_t> sum{0};
};

class Listeners : public Opened_Controller_Fixture {
protected:
    Listeners() {
        m_controller->pre_init(true);
        m_controller->prepare_for_streaming();
        m_controller->set_RHD_aqustion_listener(m_rhd);
    }

    // Streams one block of every port through the pump, ends the stream, and answers what was printed.
    std::string stream_one_block(unsigned rhd_streams = 0) {
        recording::Recording_Options options;
        options.blocks = 1;
        options.rhd_streams = rhd_streams;
        const std::vector<std::uint8_t> stream = recording::make_recording(options);
        testing::internal::CaptureStdout();
        for (std::size_t at = 0; at < stream.size(); at += mebibyte) {
            const auto first = stream.begin() + static_cast<std::ptrdiff_t>(at);
            m_box->queue_stream_read({first, first + static_cast<std::ptrdiff_t>(mebibyte)});
            EXPECT_TRUE(m_controller->pump_data_to_demux());
        }
        // The end of the stream drops RHD frames that are still queued.
        m_controller->wait_until_delivered();
        m_controller->finalize_stream();
        return testing::internal::GetCapturedStdout();
    }

    static constexpr unsigned super_frames = 1792;

    std::shared_ptr<Counting_Listener> m_listener = std::make_shared<Counting_Listener>();
    std::shared_ptr<Counting_RHD_Listener> m_rhd = std::make_shared<Counting_RHD_Listener>();
};

TEST_F(Listeners, PortIsDeliveredThroughItsGainFilter) {
    m_controller->set_NP_aqustion_listener(m_listener, 2, true);
    stream_one_block();
    EXPECT_EQ(m_listener->ap_sets, super_frames);
    EXPECT_EQ(m_listener->lfp_sets, super_frames / 12);
    EXPECT_GT(m_listener->sum, 0U);
    EXPECT_GT(m_rhd->frames, super_frames);
    EXPECT_EQ(m_log.count("Total processed SF counter : 0"), 1);
    EXPECT_EQ(m_log.count("Total processed RHD frames : " + std::to_string(m_rhd->frames)), 1);
}

TEST_F(Listeners, FramesHaveAsManyRhdStreamsAsWereEnabled) {
    m_controller->enable_streaming(false, {}, true, {0, 5}, false);
    stream_one_block(2);
    EXPECT_GT(m_rhd->frames, super_frames);
    EXPECT_EQ(m_rhd->streams, 2U);
}

TEST_F(Listeners, InitialisingAgainMakesNewFilters) {
    m_controller->set_NP_aqustion_listener(m_listener, 2, true);
    EXPECT_TRUE(m_controller->pre_init(true));
    stream_one_block();
    EXPECT_EQ(m_listener->ap_sets, 0U) << "the old filter, and the route through it, are gone";
}

TEST_F(Listeners, FilterSaysWhenItsListenerHasGone) {
    m_controller->set_NP_aqustion_listener(m_listener, 2, true);
    m_listener.reset();
    EXPECT_EQ(occurrences(stream_one_block(), "C_L2_CH_Gain_Fix_Filter has no ap listener\n"), super_frames)
        << "the filter stands between the demultiplexer and the listener";
}

TEST_F(Listeners, PortIsDeliveredDirectly) {
    m_controller->set_NP_aqustion_listener(m_listener, 3, false);
    const std::string printed = stream_one_block();
    EXPECT_EQ(m_listener->ap_sets, super_frames);
    EXPECT_EQ(occurrences(printed, "C_L2_CH_Gain_Fix_Filter has no"), 0U);
}

TEST_F(Listeners, SavedListenersComeBack) {
    const auto replacement = std::make_shared<Counting_Listener>();
    const auto rhd_replacement = std::make_shared<Counting_RHD_Listener>();
    std::array<std::shared_ptr<Counting_Listener>, 4> others;
    for (const unsigned port : {0U, 2U}) {
        others[port] = std::make_shared<Counting_Listener>();
        m_controller->set_NP_aqustion_listener(others[port], port, false);
    }
    m_controller->set_NP_aqustion_listener(m_listener, 1, false);
    EXPECT_EQ(printed_by([&] { m_controller->save_stream_listeners(); }).out, "Saving stream listeners\n");
    for (unsigned port = 0; port < 4; ++port) {
        m_controller->set_NP_aqustion_listener(replacement, port, false);
    }
    m_controller->set_RHD_aqustion_listener(rhd_replacement);
    EXPECT_EQ(printed_by([&] { m_controller->restore_stream_listeners(); }).out,
              "Restoring stream listeners\n");
    stream_one_block();
    EXPECT_EQ(m_listener->ap_sets, super_frames);
    EXPECT_EQ(others[0]->ap_sets, super_frames);
    EXPECT_EQ(others[2]->ap_sets, super_frames);
    EXPECT_NE(others[0]->sum, m_listener->sum) << "each port has its own again";
    EXPECT_NE(others[2]->sum, m_listener->sum);
    EXPECT_EQ(replacement->ap_sets, 0U) << "a port that had no listener has none again";
    EXPECT_GT(m_rhd->frames, 0U);
    EXPECT_EQ(rhd_replacement->frames, 0U);
}

TEST_F(Listeners, PortsOutOfBoundsAreRefused) {
    EXPECT_EQ(text_thrown_by<std::out_of_range>(
                  [&] { m_controller->set_NP_aqustion_listener(m_listener, 4, true); }),
              "invalid array<T, N> subscript");
    EXPECT_EQ(text_thrown_by<std::runtime_error>(
                  [&] { m_controller->set_NP_aqustion_listener(m_listener, 4, false); }),
              "illegal np demux index inside Async_PSB_And_RHD_Demux::set_L2_CH_Results_Listener");
}

TEST_F(Hardware_Streaming, FilterMustExistBeforeItIsRoutedThrough) {
    const auto listener = std::make_shared<Counting_Listener>();
    EXPECT_EQ(text_thrown_by<std::runtime_error>(
                  [&] { m_controller->set_NP_aqustion_listener(listener, 0, true); }),
              "set_NP_aqustion_listener before pre_init");
}

} // namespace
