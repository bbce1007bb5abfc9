#include "probe/CP_L1_ADC_TO_Channel.h"

#include "Captured_Output.h"
#include "Demux_Streams.h"
#include "Recording_Listeners.h"

#include <gtest/gtest.h>

#include <array>
#include <memory>

namespace {

using namespace Pelgar::ORBE::demux;
using namespace Pelgar::ORBE::test;

class CP_L1_ADC_TO_Channel_Test : public testing::Test {
protected:
    CP_L1_ADC_TO_Channel_Test() { m_stage.set_l2_ch_result_listener(m_listener); }

    void publish(const Adc_Frame& frame) {
        std::uint16_t adc[adc_frame_length];
        std::copy(frame.begin(), frame.end(), adc);
        m_stage.publish_adc_data(adc);
    }

    // Publishes frames with the counters first to last and answers what was printed.
    Captured_Output publish_counters(std::uint32_t first, std::uint32_t last) {
        return captured_output([&] {
            for (std::uint32_t counter = first; counter <= last; ++counter) {
                publish(frame_with_counter(counter));
            }
        });
    }

    CP_L1_ADC_TO_Channel m_stage;
    std::shared_ptr<Recording_L2_Listener> m_listener = std::make_shared<Recording_L2_Listener>();
};

TEST_F(CP_L1_ADC_TO_Channel_Test, FirstFrameWithCounterZeroIsSilent) {
    const auto output = publish_counters(0, 0);
    EXPECT_EQ(output.out, "");
    EXPECT_EQ(output.err, "");
}

TEST_F(CP_L1_ADC_TO_Channel_Test, CountsFrames) {
    EXPECT_EQ(m_stage.get_frame_count(), 0U);
    publish_counters(0, 41);
    EXPECT_EQ(m_stage.get_frame_count(), 42U);
}

TEST_F(CP_L1_ADC_TO_Channel_Test, CarryFromTheLowHalfIsContinuous) {
    const auto output = publish_counters(0, 2100);
    EXPECT_EQ(output.out, "");
    EXPECT_EQ(output.err, "");
}

TEST_F(CP_L1_ADC_TO_Channel_Test, FirstFrameWithAnotherCounterFailsBothChecks) {
    const auto output = publish_counters(2049, 2049);
    EXPECT_EQ(output.out, "");
    EXPECT_EQ(output.err,
              "check_frame_number_continuity failed, current counter (two part) : 2 1, prev counter : "
              "4294967295\n"
              " stream DW counter discontiutiy. Prev DW counter : 4294967295, current DW counter : "
              "2049\n");
}

TEST_F(CP_L1_ADC_TO_Channel_Test, GapFailsBothChecksOnce) {
    publish_counters(0, 5);
    const auto output = publish_counters(8, 10);
    EXPECT_EQ(output.err,
              "check_frame_number_continuity failed, current counter (two part) : 0 8, prev counter : "
              "5\n"
              " stream DW counter discontiutiy. Prev DW counter : 5, current DW counter : 8\n");
    EXPECT_EQ(output.out, "");
}

TEST_F(CP_L1_ADC_TO_Channel_Test, RepeatedCounterFailsBothChecks) {
    publish_counters(0, 5);
    const auto output = publish_counters(5, 5);
    EXPECT_EQ(output.err,
              "check_frame_number_continuity failed, current counter (two part) : 0 5, prev counter : "
              "5\n"
              " stream DW counter discontiutiy. Prev DW counter : 5, current DW counter : 5\n");
}

TEST_F(CP_L1_ADC_TO_Channel_Test, RollOverOfTheTwentyBitCounterContinuesInThirtyTwoBits) {
    publish_counters(0xFFFFE, 0xFFFFF);
    const auto output = captured_output([&] {
        publish(frame_with_counter(0));
        publish(frame_with_counter(1));
    });
    EXPECT_EQ(output.out, "frame_number rolled : 0, prev count : 1048575\n"
                          "Incrementing m_three_word_counter_high_part\n");
    EXPECT_EQ(output.err, "");
}

TEST_F(CP_L1_ADC_TO_Channel_Test, GapAcrossTheRollOverStillIncrementsTheHighPart) {
    publish_counters(0xFFFFF, 0xFFFFF);
    const auto output = publish_counters(5, 5);
    EXPECT_EQ(output.out, "Incrementing m_three_word_counter_high_part\n");
    EXPECT_EQ(output.err,
              "check_frame_number_continuity failed, current counter (two part) : 0 5, prev counter : "
              "1048575\n"
              " stream DW counter discontiutiy. Prev DW counter : 1048575, current DW counter : "
              "1048581\n");
}

TEST_F(CP_L1_ADC_TO_Channel_Test, ReturnToZeroFromElsewhereIsAGap) {
    publish_counters(0, 7);
    const auto output = publish_counters(0, 0);
    EXPECT_EQ(output.out, "");
    EXPECT_EQ(output.err,
              "check_frame_number_continuity failed, current counter (two part) : 0 0, prev counter : "
              "7\n"
              " stream DW counter discontiutiy. Prev DW counter : 7, current DW counter : 0\n");
}

TEST_F(CP_L1_ADC_TO_Channel_Test, FirstCheckUsesTheWholeWordsAndTheSecondTheirTenBits) {
    Adc_Frame frame{};
    frame[33] = 0x0400;
    frame[34] = 0x0400;
    const auto output = captured_output([&] { publish(frame); });
    EXPECT_EQ(output.out, "");
    EXPECT_EQ(output.err,
              "check_frame_number_continuity failed, current counter (two part) : 1024 1024, prev counter "
              ": 4294967295\n");
}

TEST_F(CP_L1_ADC_TO_Channel_Test, PhaseAfterTheRollOverFollowsTheThirtyTwoBitCounter) {
    publish_counters(0xFFFFF, 0xFFFFF);
    ASSERT_TRUE(m_listener->sets.empty());
    captured_output([&] { // 2^20 mod 13 is 9
        publish(frame_with_counter(0));
        publish(frame_with_counter(1));
        publish(frame_with_counter(2));
        EXPECT_TRUE(m_listener->sets.empty());
        publish(frame_with_counter(3));
    });
    EXPECT_EQ(m_listener->count(Band::AP), 1U);
}

// After 3 h 3 min 33 s of a probe.
TEST_F(CP_L1_ADC_TO_Channel_Test, EndOfTheThirtyTwoBitCounterTakesThePhaseAnew) {
    captured_output([&] {
        for (int wrap = 1; wrap < 4096; ++wrap) {
            publish(frame_with_counter(0xFFFFF));
            publish(frame_with_counter(0));
        }
        publish(frame_with_counter(0xFFFFF));
    });
    const auto before = m_listener->count(Band::AP);
    Captured_Output output = publish_counters(0, 11); // 2^32 mod 13 is 9: in step, 3 would end a sample
    EXPECT_EQ(output.out, "frame_number rolled : 0, prev count : 1048575\n"
                          "Incrementing m_three_word_counter_high_part\n");
    EXPECT_EQ(output.err, "") << "the counter itself runs on";
    EXPECT_EQ(m_listener->count(Band::AP), before);
    publish_counters(12, 12);
    EXPECT_EQ(m_listener->count(Band::AP), before + 1);
}

TEST_F(CP_L1_ADC_TO_Channel_Test, ApIsPublishedOnFrame12OfEverySuperFrame) {
    for (std::uint32_t counter = 0; counter < 13 * 30; ++counter) {
        const auto before = m_listener->count(Band::AP);
        publish(frame_with_counter(counter));
        ASSERT_EQ(m_listener->count(Band::AP) - before, counter % 13 == 12 ? 1U : 0U) << counter;
    }
}

TEST_F(CP_L1_ADC_TO_Channel_Test, LfpIsPublishedOnFrame143OfEveryTwelveSuperFrames) {
    for (std::uint32_t counter = 0; counter < 156 * 4; ++counter) {
        const auto before = m_listener->count(Band::LFP);
        publish(frame_with_counter(counter));
        ASSERT_EQ(m_listener->count(Band::LFP) - before, counter % 156 == 143 ? 1U : 0U) << counter;
    }
}

// Channel c belongs to ADC 2 (c / 24) + c % 2 and to turn c % 24 / 2 of the twelve.
TEST_F(CP_L1_ADC_TO_Channel_Test, ApFramesFillAllChannelsByAdcAndSlot) {
    constexpr std::uint32_t first = 13 * 5;
    captured_output([&] {
        for (std::uint32_t counter = first; counter < first + 13; ++counter) {
            publish(numbered_frame(counter));
        }
    });
    ASSERT_EQ(m_listener->sets.size(), 1U);
    ASSERT_EQ(m_listener->sets[0].band, Band::AP);
    for (std::uint32_t channel = 0; channel < 384; ++channel) {
        const std::uint32_t adc = 2 * (channel / 24) + channel % 2;
        const std::uint32_t slot = channel % 24 / 2;
        EXPECT_EQ(m_listener->sets[0].values[channel], numbered_frame(first + 1 + slot)[adc]) << channel;
    }
}

TEST_F(CP_L1_ADC_TO_Channel_Test, LfpFramesFillAllChannelsByAdcAndSlot) {
    captured_output([&] {
        for (std::uint32_t counter = 0; counter < 144; ++counter) {
            publish(numbered_frame(counter));
        }
    });
    ASSERT_EQ(m_listener->sets.back().band, Band::LFP);
    for (std::uint32_t channel = 0; channel < 384; ++channel) {
        const std::uint32_t adc = 2 * (channel / 24) + channel % 2;
        const std::uint32_t slot = channel % 24 / 2;
        EXPECT_EQ(m_listener->sets.back().values[channel], numbered_frame(13 * slot)[adc]) << channel;
    }
}

TEST_F(CP_L1_ADC_TO_Channel_Test, EveryAdcStartsAtItsOwnChannel) {
    constexpr std::array<std::size_t, 32> first_channel = {
        0,   1,   24,  25,  48,  49,  72,  73,  96,  97,  120, 121, 144, 145, 168, 169,
        192, 193, 216, 217, 240, 241, 264, 265, 288, 289, 312, 313, 336, 337, 360, 361};
    for (std::size_t adc = 0; adc < 32; ++adc) {
        m_listener->sets.clear();
        captured_output([&] {
            Adc_Frame first = frame_with_counter(1);
            first[adc] = 777;
            publish(first);
            publish(frame_with_counter(12));
        });
        ASSERT_EQ(m_listener->sets.size(), 1U);
        for (std::size_t channel = 0; channel < 384; ++channel) {
            ASSERT_EQ(m_listener->sets[0].values[channel], channel == first_channel[adc] ? 777 : 0);
        }
    }
}

TEST_F(CP_L1_ADC_TO_Channel_Test, TheUnusedValueChangesNothing) {
    captured_output([&] {
        Adc_Frame frame = frame_with_counter(12);
        frame[32] = 0x3FF;
        publish(frame);
    });
    EXPECT_EQ(m_listener->sets.at(0).values, Channel_Values{});
}

TEST_F(CP_L1_ADC_TO_Channel_Test, LostFramesLeaveTheValuesFromBeforeAndShiftNothing) {
    captured_output([&] {
        for (std::uint32_t counter = 0; counter < 13; ++counter) {
            publish(numbered_frame(counter));
        }
        for (std::uint32_t counter = 13 + 7; counter < 26; ++counter) {
            publish(numbered_frame(counter));
        }
    });
    ASSERT_EQ(m_listener->sets.size(), 2U);
    for (std::uint32_t channel = 0; channel < 384; ++channel) {
        const std::uint32_t adc = 2 * (channel / 24) + channel % 2;
        const std::uint32_t phase = 1 + channel % 24 / 2;
        const std::uint32_t counter = phase < 7 ? phase : 13 + phase;
        EXPECT_EQ(m_listener->sets[1].values[channel], numbered_frame(counter)[adc]) << channel;
    }
}

TEST_F(CP_L1_ADC_TO_Channel_Test, WithoutAListenerEveryPublishPointPrintsItsLine) {
    m_stage.set_l2_ch_result_listener({});
    EXPECT_EQ(publish_counters(0, 11).err, "");
    EXPECT_EQ(publish_counters(12, 12).err, "publish_ap_ch_data destination it not alive\n");
    publish_counters(13, 142);
    const auto output = publish_counters(143, 143);
    EXPECT_EQ(output.err, "publish_lp_ch_data destination it not alive\n");
    EXPECT_EQ(output.out, "");
}

TEST_F(CP_L1_ADC_TO_Channel_Test, ADeadListenerIsNotKeptAlive) {
    m_listener.reset();
    EXPECT_TRUE(m_stage.get_l2_ch_result_listener().expired());
    EXPECT_EQ(publish_counters(0, 12).err, "publish_ap_ch_data destination it not alive\n");
}

TEST_F(CP_L1_ADC_TO_Channel_Test, GetterAnswersTheListener) {
    EXPECT_EQ(m_stage.get_l2_ch_result_listener().lock(), m_listener);
}

TEST_F(CP_L1_ADC_TO_Channel_Test, ResyncPrintsItsLineAndKeepsThePreviousCounters) {
    publish_counters(0, 3);
    const auto output = captured_output([&] { m_stage.reset_and_resync_counters(); });
    EXPECT_EQ(output.out, "reset_and_resync_counters requested.\n");
    EXPECT_EQ(output.err, "");
    EXPECT_EQ(publish_counters(4, 4).err, "");
    EXPECT_EQ(publish_counters(0, 0).err,
              "check_frame_number_continuity failed, current counter (two part) : 0 0, prev counter : 4\n"
              " stream DW counter discontiutiy. Prev DW counter : 4, current DW counter : 0\n");
}

TEST_F(CP_L1_ADC_TO_Channel_Test, ResyncAfterTheRollOverMakesTheNextFrameADwDiscontinuity) {
    publish_counters(0xFFFFF, 0xFFFFF);
    publish_counters(0, 0);
    captured_output([&] { m_stage.reset_and_resync_counters(); });
    const auto output = publish_counters(1, 1);
    EXPECT_EQ(output.err,
              " stream DW counter discontiutiy. Prev DW counter : 1048576, current DW counter : 1\n");
    EXPECT_EQ(output.out, "");
}

// The receiver may change the values in place; what it changed shows up only where no new value came.
class CP_L1_ADC_TO_Channel_In_Place : public CP_L1_ADC_TO_Channel_Test {
protected:
    struct Changing_Listener : Recording_L2_Listener {
        void publish_ap_ch_data(std::uint16_t (&values)[channel_count]) override {
            Recording_L2_Listener::publish_ap_ch_data(values);
            for (std::uint16_t& value : values) {
                value = changed(value);
            }
        }
    };

    static std::uint16_t changed(std::uint16_t value) { return static_cast<std::uint16_t>(value + 0x4000); }

    CP_L1_ADC_TO_Channel_In_Place() { m_stage.set_l2_ch_result_listener(m_changing_listener); }

    void publish_numbered(std::uint32_t first, std::uint32_t last) {
        captured_output([&] {
            for (std::uint32_t counter = first; counter <= last; ++counter) {
                publish(numbered_frame(counter));
            }
        });
    }

    // What the frame of `counter` brings for the channel.
    static std::uint16_t brought(std::uint32_t counter, std::uint32_t channel) {
        return numbered_frame(counter)[2 * (channel / 24) + channel % 2];
    }

    std::shared_ptr<Changing_Listener> m_changing_listener = std::make_shared<Changing_Listener>();
};

TEST_F(CP_L1_ADC_TO_Channel_In_Place, TheSetIsRefilledAfterTheListenerChangedIt) {
    publish_numbered(0, 25);
    ASSERT_EQ(m_changing_listener->sets.size(), 2U);
    for (std::uint32_t channel = 0; channel < channel_count; ++channel) {
        const std::uint32_t phase = 1 + channel % 24 / 2;
        EXPECT_EQ(m_changing_listener->sets[1].values[channel], brought(13 + phase, channel)) << channel;
    }
}

TEST_F(CP_L1_ADC_TO_Channel_In_Place, ValuesOfLostFramesAreChangedOnceMoreAtEveryDelivery) {
    publish_numbered(0, 12);
    for (const std::uint32_t super_frame : {1U, 2U}) {
        publish_numbered(13 * super_frame + 7, 13 * super_frame + 12);
    }
    ASSERT_EQ(m_changing_listener->sets.size(), 3U);
    for (std::uint32_t channel = 0; channel < channel_count; ++channel) {
        const std::uint32_t phase = 1 + channel % 24 / 2;
        const std::uint16_t left_over = brought(phase, channel);
        const bool lost = phase < 7;
        EXPECT_EQ(m_changing_listener->sets[1].values[channel],
                  lost ? changed(left_over) : brought(13 + phase, channel))
            << channel;
        EXPECT_EQ(m_changing_listener->sets[2].values[channel],
                  lost ? changed(changed(left_over)) : brought(26 + phase, channel))
            << channel;
    }
}

} // namespace
