// The parts of the host mode by themselves.
#include "Log_Capture.h"
#include "Waiter_Guard.h"

#include <common/Waiting.h>
#include <gain/Gain_Product.h>
#include <host_mode/Device_Table.h>
#include <host_mode/Host_Mode_Options.h>
#include <host_streams/ADC_Inputs.h>
#include <host_streams/Drop_Report.h>
#include <host_streams/Packet_Ring.h>
#include <host_streams/Sample_Count.h>
#include <host_streams/Sample_Stamp.h>
#include <host_streams/Sync_Levels.h>
#include <host_streams/Sync_Source.h>
#include <probe/Super_Frame_Counter.h>
#include <streaming/Recording_Pace.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace Neuropixels;
using namespace Pelgar::ORBE;
using namespace Pelgar::ORBE::npoe_adapter;
using demux::Super_Frame_Counter;
using Devices = Host_Mode_Options::Devices;

// ---- The switch file.

std::string refusal(const std::string& line) {
    try {
        parse_host_mode(line);
        return "";
    } catch (const std::invalid_argument& exception) {
        return exception.what();
    }
}

TEST(Host_Mode_Switch, ReadsTheDevicesAndTheVersions) {
    EXPECT_EQ(parse_host_mode("").devices, Devices::usb);
    EXPECT_EQ(parse_host_mode("  usb ").devices, Devices::usb);
    EXPECT_EQ(parse_host_mode("both").devices, Devices::both);
    EXPECT_EQ(parse_host_mode("pxi").basestation, (Firmware_Version{2, 0, 169}));
    EXPECT_EQ(parse_host_mode("pxi").connect_card, (Firmware_Version{3, 2, 189}));
    const auto options = parse_host_mode("pxi 3.0.226 4.0.233");
    EXPECT_EQ(options.devices, Devices::pxi);
    EXPECT_EQ(options.basestation, (Firmware_Version{3, 0, 226}));
    EXPECT_EQ(options.connect_card, (Firmware_Version{4, 0, 233}));
}

TEST(Host_Mode_Switch, RefusesEverythingElse) {
    EXPECT_EQ(refusal("USB"), "\"USB\" is none of usb, pxi, both");
    EXPECT_EQ(refusal("pxi 2.0.169"), "behind \"pxi\" stand two firmware versions or none");
    for (const char* const version :
         {"2.0", "2.0.169.1", "2.0.x", "2..169", "2.0.99999999999", "-2.0.1", "2.0.1."}) {
        EXPECT_EQ(refusal(std::string("pxi 2.0.169 ") + version),
                  "\"" + std::string(version) + "\" is no firmware version (such as 2.0.169)");
    }
}

TEST(Host_Mode_Switch, IsNotThereWithoutAFile) {
    EXPECT_FALSE(read_host_mode_switch().has_value());
}

// ---- Stamps.

TEST(Stamps, StepByThreeOrFourOverTheWrapToo) {
    EXPECT_EQ(stamp_of(0), 0U);
    EXPECT_EQ(stamp_of(3), 10U);
    const std::uint64_t wrap = (std::uint64_t{1} << 32U) * 3 / 10;
    for (std::uint64_t sample = wrap - 100; sample < wrap + 100; ++sample) {
        const std::uint32_t step = stamp_of(sample + 1) - stamp_of(sample);
        EXPECT_TRUE(step == 3 || step == 4) << sample;
    }
    EXPECT_GT(stamp_of(wrap - 1), stamp_of(wrap + 1));
}

TEST(Sample_Counts, FollowTheStreamsOwnCounter) {
    Sample_Count count;
    EXPECT_EQ(count.number_of(500), 0U);
    EXPECT_EQ(count.number_of(501), 1U);
    EXPECT_EQ(count.number_of(511), 11U) << "nine are lost";
    EXPECT_EQ(count.number_of(3), 12U) << "a stream that began anew goes on";
    EXPECT_EQ(count.number_of(5), 14U);
    count.restart();
    EXPECT_EQ(count.number_of(70), 0U);
}

constexpr std::uint32_t counter_bits = 20;

std::uint32_t wrapped(std::uint64_t super_frame) {
    return static_cast<std::uint32_t>(super_frame * 13 % (std::uint64_t{1} << counter_bits));
}

TEST(Super_Frame_Counters, GoOnOverTheWrapsForDays) {
    Super_Frame_Counter counter;
    // Beyond 32 bits of frames, which are three hours.
    const std::uint64_t end = (std::uint64_t{1} << 32U) / 13 + 1000;
    for (std::uint64_t i = 0; i < end; i += std::uint64_t{i % 1'000'000 < 200 ? 1U : 40'000U}) {
        ASSERT_EQ(counter.follow(wrapped(i)), i);
    }
}

TEST(Super_Frame_Counters, KnowHowManyAreLostOverSeveralWraps) {
    for (const std::uint64_t lost : {1U, 12U, 80'000U, 81'000U, 200'000U}) {
        Super_Frame_Counter counter;
        EXPECT_EQ(counter.follow(wrapped(70'000)), 70'000U);
        EXPECT_EQ(counter.follow(wrapped(70'001 + lost)), 70'001 + lost);
        EXPECT_EQ(counter.follow(wrapped(70'002 + lost)), 70'002 + lost);
    }
}

// The counter alone tells gaps of up to 8 s apart. What a full queue has dropped is known.
TEST(Super_Frame_Counters, AreRightBehindAnyGapThatIsKnown) {
    for (const std::uint32_t lost : {1U, 100'000U, 2'000'000U, 400'000'000U}) {
        Super_Frame_Counter counter;
        const auto frame_counter = [](std::uint64_t super_frame) {
            return static_cast<std::uint32_t>(13 * super_frame & 0xFFFFF);
        };
        EXPECT_EQ(counter.follow(0), 0U);
        counter.skip(lost);
        EXPECT_EQ(counter.follow(frame_counter(lost + 1U)), lost + 1U);
        EXPECT_EQ(counter.follow(frame_counter(lost + 2U)), lost + 2U);
        EXPECT_EQ(counter.follow(frame_counter(lost + 50U)), lost + 50U) << "more are missing than was known";
    }
}

TEST(Super_Frame_Counters, TakeAProbeThatBeginsAnewForWhatItIs) {
    Super_Frame_Counter counter;
    for (std::uint64_t i = 0; i < 1'000'000; i += 50'000) {
        EXPECT_EQ(counter.follow(wrapped(i)), i);
    }
    EXPECT_EQ(counter.follow(0), 0U);
    EXPECT_EQ(counter.follow(13), 1U);
}

// ---- Sync.

constexpr Input_Levels ttl(unsigned number) {
    return Input_Levels{1} << (first_ttl_bit + number);
}

TEST(Sync_Sources, BeginWithTheFirstInputAndNoClock) {
    const Sync_Source source;
    EXPECT_TRUE(source.is_connected(SM_Output_StatusBit, SM_Input_SMA));
    EXPECT_TRUE(source.input_level(ttl(0)));
    EXPECT_FALSE(source.input_level(~ttl(0)));
    EXPECT_FALSE(source.clock_level(0));
}

TEST(Sync_Sources, FollowTheSwitchMatrix) {
    Sync_Source source;
    source.connect(SM_Output_StatusBit, SM_Input_SMA, false);
    EXPECT_FALSE(source.uses_inputs());
    source.connect(SM_Output_StatusBit, SM_Input_PXI6, true);
    EXPECT_TRUE(source.input_level(ttl(7)));
    source.connect(SM_Output_StatusBit, SM_Input_SMA1, true);
    EXPECT_TRUE(source.input_level(ttl(1)));
    source.connect(SM_Output_StatusBit, SM_Input_ADC3, true);
    EXPECT_TRUE(source.input_level(Input_Levels{1} << (first_comparator_bit + 3)));
    source.connect(SM_Output_SMA, SM_Input_PXI0, true);
    source.clear(SM_Output_StatusBit);
    EXPECT_FALSE(source.uses_inputs());
    EXPECT_TRUE(source.is_connected(SM_Output_SMA, SM_Input_PXI0));
}

TEST(Sync_Sources, ClockIsHighInTheFirstHalfOfItsPeriod) {
    Sync_Source source;
    source.set_clock_period(10.0);
    EXPECT_FALSE(source.clock_level(0)) << "nobody has asked for it";
    source.ask_for_clock(true);
    EXPECT_TRUE(source.clock_level(0));
    EXPECT_TRUE(source.clock_level(149));
    EXPECT_FALSE(source.clock_level(150));
    EXPECT_TRUE(source.clock_level(300));
    source.set_clock_period(0.0);
    source.set_clock_period(std::numeric_limits<double>::quiet_NaN());
    EXPECT_FALSE(source.clock_level(150)) << "left as it was";
    source.connect(SM_Output_StatusBit, SM_Input_SMA, true);
    EXPECT_FALSE(source.clock_level(0)) << "an input was chosen instead";
    source.connect(SM_Output_SMA, SM_Input_SyncClk, true);
    EXPECT_TRUE(source.clock_level(0)) << "led to a connector, it is seen as well";
}

TEST(Sync_Level_Records, KnowTheLevelAtASample) {
    Sync_Levels levels;
    levels.restart(3);
    EXPECT_FALSE(levels.has(3, 0));
    for (std::uint64_t sample = 0; sample < 100'000; ++sample) {
        levels.record(sample, sample % 700 < 300);
    }
    for (std::uint64_t sample = 0; sample < 100'000; ++sample) {
        ASSERT_TRUE(levels.has(3, sample));
        ASSERT_EQ(levels.level(3, sample), sample % 700 < 300);
    }
    EXPECT_FALSE(levels.has(3, 100'000));
    EXPECT_FALSE(levels.has(2, 5));
    EXPECT_FALSE(levels.level(2, 5));
}

TEST(Sync_Level_Records, HoldTheLevelOverAGap) {
    Sync_Levels levels;
    levels.restart(1);
    levels.record(0, true);
    levels.record(5000, false);
    for (const std::uint64_t lost : {1U, 63U, 64U, 2500U, 4999U}) {
        EXPECT_TRUE(levels.level(1, lost)) << lost;
    }
    levels.record(900'000, true);
    EXPECT_TRUE(levels.level(1, 900'000));
    EXPECT_TRUE(levels.level(1, 900'001)) << "the last one, until there is another";
}

TEST(Sync_Level_Records, HoldTheLevelOverAGapWhereAnotherStood) {
    Sync_Levels levels;
    levels.restart(1);
    // High for longer than anything is kept.
    constexpr std::uint64_t end = 300'000;
    for (std::uint64_t sample = 0; sample < end; ++sample) {
        levels.record(sample, true);
    }
    levels.record(end, false);
    levels.record(end + 400'000, true);
    for (const std::uint64_t back : {1U, 1000U, 100'000U, 250'000U}) {
        EXPECT_FALSE(levels.level(1, end + 400'000 - back)) << back;
    }
}

// ---- ADC inputs.

TEST(ADC_Comparators, HaveTwoThresholds) {
    ADC_Inputs inputs;
    ASSERT_TRUE(inputs.set_range(ADC_RANGE_5V));
    ASSERT_TRUE(inputs.set_thresholds(0, {1.0, 2.0}));
    const auto at = [&inputs](double volts) {
        const std::array<std::int16_t, 1> sample{static_cast<std::int16_t>(std::lround(volts / 5.0 * 32768))};
        return inputs.compare(sample) & 1U;
    };
    EXPECT_EQ(at(1.5), 0U);
    EXPECT_EQ(at(2.1), 1U);
    EXPECT_EQ(at(1.5), 1U);
    EXPECT_EQ(at(0.9), 0U);
    ASSERT_TRUE(inputs.set_range(ADC_RANGE_10V));
    EXPECT_EQ(at(1.1), 1U) << "the same number is 2.2 V of 10 V";
}

TEST(ADC_Comparators, RefuseWhatCannotBe) {
    ADC_Inputs inputs;
    EXPECT_FALSE(inputs.set_thresholds(12, {0.0, 1.0}));
    EXPECT_FALSE(inputs.set_thresholds(-1, {0.0, 1.0}));
    EXPECT_FALSE(inputs.set_thresholds(0, {1.0, 0.5}));
    EXPECT_FALSE(inputs.set_thresholds(0, {std::numeric_limits<double>::quiet_NaN(), 0.5}));
    EXPECT_FALSE(inputs.set_range(static_cast<ADCrange_t>(3)));
}

// ---- Queue.

TEST(Packet_Rings, KeepTheOldestAndGiveEachRecordOnce) {
    Packet_Ring<int> ring(3);
    const auto push = [&ring](int number) { return ring.push([number](int& record) { record = number; }); };
    EXPECT_TRUE(push(1) && push(2) && push(3));
    EXPECT_FALSE(push(4));
    std::vector<int> seen;
    const auto all = [&seen](const int& record, std::size_t) {
        seen.push_back(record);
        return Verdict::taken;
    };
    EXPECT_EQ(ring.take(2, all), 2U);
    EXPECT_EQ(seen, (std::vector{1, 2}));
    EXPECT_TRUE(push(5));
    EXPECT_EQ(ring.size(), 2U);
    EXPECT_EQ(ring.take(9, all), 2U);
    EXPECT_EQ(seen, (std::vector{1, 2, 3, 5}));
    EXPECT_EQ(ring.take(9, all), 0U);
}

TEST(Packet_Rings, SkipAndLeaveWhatTheReaderSays) {
    Packet_Ring<int> ring(8);
    for (int i = 0; i < 6; ++i) {
        ring.push([i](int& record) { record = i; });
    }
    const auto look = [](const int& record, std::size_t) {
        return record < 2 ? Verdict::skipped : (record < 4 ? Verdict::taken : Verdict::left);
    };
    EXPECT_EQ(ring.take(8, look), 2U);
    EXPECT_EQ(ring.size(), 2U);
    ring.discard();
    EXPECT_EQ(ring.size(), 0U);
}

TEST(Packet_Rings, GiveAReaderWhoWasOvertakenNothing) {
    Packet_Ring<int> ring(4);
    ring.push([](int& record) { record = 1; });
    const auto taken = ring.take(4, [&ring](const int&, std::size_t) {
        ring.discard();
        return Verdict::taken;
    });
    EXPECT_EQ(taken, 0U);
    EXPECT_EQ(ring.size(), 0U);
}

TEST(Packet_Rings, LoseNothingBetweenTwoThreads) {
    Packet_Ring<std::uint64_t> ring(16);
    constexpr std::uint64_t count = 200'000;
    std::thread producer([&ring] {
        for (std::uint64_t i = 0; i < count;) {
            i += ring.push([i](std::uint64_t& record) { record = i; }) ? 1U : 0U;
        }
    });
    std::uint64_t next = 0;
    while (next < count) {
        ring.take(5, [&next](const std::uint64_t& record, std::size_t) {
            EXPECT_EQ(record, next);
            ++next;
            return Verdict::taken;
        });
    }
    producer.join();
}

TEST(Packet_Rings, NeverHoldMoreThanTheyCan) {
    Packet_Ring<int> ring(1);
    std::atomic<bool> ending{false};
    std::thread worker([&] {
        while (!ending) {
            ring.push([](int& record) { record = 1; });
            ring.discard();
        }
    });
    std::size_t most = 0;
    // Long enough for a thread to be held up in the middle of a look.
    const auto last = std::chrono::steady_clock::now() + std::chrono::milliseconds(500);
    while (std::chrono::steady_clock::now() < last) {
        for (int i = 0; i < 10'000; ++i) {
            most = std::max(most, ring.size());
        }
    }
    ending = true;
    worker.join();
    EXPECT_LE(most, 1U);
}

TEST(Drop_Reports, TellOnceASecondAtMost) {
    test::Log_Capture log;
    Drop_Report report("Port 3");
    const auto begin = Drop_Report::Clock::now();
    for (int i = 0; i < 2500; ++i) {
        report.count(begin + std::chrono::milliseconds(i));
    }
    EXPECT_EQ(log.texts(), (std::vector<std::string>{
                               "Port 3 : the host does not read fast enough, 1 packets dropped so far",
                               "Port 3 : the host does not read fast enough, 1001 packets dropped so far",
                               "Port 3 : the host does not read fast enough, 2001 packets dropped so far"}));
}

// ---- Gain.

TEST(Signed_Gain, LeavesTheMiddleAndHoldsTheEnds) {
    EXPECT_EQ(signed_gain_product(512, 1.3F), 512);
    EXPECT_EQ(signed_gain_product(612, 1.5F), 662);
    EXPECT_EQ(signed_gain_product(412, 1.5F), 362);
    EXPECT_EQ(signed_gain_product(1023, 2.0F), 1023);
    EXPECT_EQ(signed_gain_product(0, 2.0F), 0);
    EXPECT_EQ(signed_gain_product(700, std::numeric_limits<float>::quiet_NaN()), 512);
    EXPECT_EQ(signed_gain_product(700, std::numeric_limits<float>::infinity()), 1023);
}

// ---- Pace.

// So many super frames of one port; of each only the first row tells.
std::vector<std::uint8_t> super_frames_of(unsigned port, int count) {
    std::vector<std::uint8_t> piece;
    for (int super_frame = 0; super_frame < count; ++super_frame) {
        for (int row = 0; row < 65; ++row) {
            std::array<std::uint8_t, 16> bytes{static_cast<std::uint8_t>(0xD0U + port)};
            bytes[3] = row == 0 ? 0x08 : 0;
            piece.insert(piece.end(), bytes.begin(), bytes.end());
        }
    }
    return piece;
}

double seconds_of(const std::vector<std::vector<std::uint8_t>>& pieces) {
    Recording_Pace pace;
    const auto begin = std::chrono::steady_clock::now();
    for (const auto& piece : pieces) {
        pace.wait_until_due(piece);
    }
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

TEST(Recording_Paces, AreNoFasterThanTheBox) {
    EXPECT_GE(seconds_of(std::vector(5, super_frames_of(2, 600))), 0.099);
}

TEST(Recording_Paces, GoOnWhenTheFirstPortStops) {
    EXPECT_GE(seconds_of({super_frames_of(0, 300), super_frames_of(2, 1500), super_frames_of(2, 1500)}),
              0.099);
}

// Where a wait takes no time but by the clock.
TEST(Recording_Paces, PlayInTimeAgainAfterAStallAndDoNotHurry) {
    using std::chrono::milliseconds;
    auto now = std::chrono::steady_clock::now();
    replace_planning_clock([&] { return now; });
    std::vector<milliseconds> waits;
    replace_waiter([&](milliseconds duration) {
        waits.push_back(duration);
        now += duration;
    });
    Recording_Pace pace;
    const auto piece = super_frames_of(1, 600); // 20 ms
    pace.wait_until_due(piece);
    now += milliseconds(15);
    pace.wait_until_due(piece);
    now += milliseconds(3000);
    pace.wait_until_due(piece);
    pace.wait_until_due(piece);
    replace_waiter({});
    replace_planning_clock({});
    EXPECT_EQ(waits, (std::vector{milliseconds(20), milliseconds(5), milliseconds(20)}));
}

} // namespace
