#include "checker/Recording_Checker.h"

#include "generator/Recording_Generator.h"

#include <gtest/gtest.h>

#include <random>

namespace {

using namespace Pelgar::ORBE::recording;
using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t mib = 1U << 20;

Check_Report check(const Bytes& recording) {
    Recording_Checker checker;
    std::size_t at = 0;
    for (; at + mib <= recording.size(); at += mib) {
        checker.look_at_piece(std::span(recording).subspan(at, mib));
    }
    checker.look_at_rest(std::span(recording).subspan(at));
    return checker.report();
}

Check_Report check_with(const std::string& fault, unsigned rhd_streams = 0) {
    Recording_Options options;
    options.super_frames = 200;
    options.rhd_streams = rhd_streams;
    if (!fault.empty()) {
        options.faults = {parse_fault(fault)};
    }
    return check(make_recording(options));
}

TEST(RecordingChecker, FindsNothingWrongWithAGoodRecording) {
    const Check_Report report = check_with("");
    EXPECT_TRUE(report.clean());
    for (const Port_Findings& port : report.ports) {
        EXPECT_EQ(port.rows, 200U * 65);
        EXPECT_EQ(port.super_frames, 200U);
        EXPECT_EQ(port.packets, 0U);
    }
    EXPECT_EQ(report.rhd.rows, 571U); // 4000 words, seven a row
    EXPECT_EQ(report.rhd.frames, 199U);
    EXPECT_EQ(report.rhd.streams, 0U);
    EXPECT_EQ(report.rows, 4U * 200 * 65 + 571);
    EXPECT_EQ(report.bytes, report.rows * 16);
    EXPECT_EQ(report.bytes_never_pushed, report.bytes);
}

TEST(RecordingChecker, CountsThePacketsThatAHostReceives) {
    Recording_Options options;
    options.blocks = 1;
    options.ports = {2};
    const Check_Report report = check(make_recording(options));
    EXPECT_TRUE(report.clean());
    EXPECT_EQ(report.ports[0].packets, 0U);
    EXPECT_EQ(report.ports[1].packets, 149U);
    EXPECT_EQ(report.rhd.packets, report.rhd.frames);
    EXPECT_EQ(report.bytes_never_pushed, 0U);
}

TEST(RecordingChecker, FindsTheNumberOfRHDStreams) {
    for (const unsigned streams : {1U, 4U, 32U}) {
        const Check_Report report = check_with("", streams);
        EXPECT_TRUE(report.clean());
        EXPECT_EQ(report.rhd.streams, streams);
    }
}

TEST(RecordingChecker, FindsALostRow) {
    const Check_Report report = check_with("lost-row:2@700");
    EXPECT_FALSE(report.clean());
    const Port_Findings& port = report.ports[1];
    EXPECT_EQ(port.counter_gaps.count(), 1U);
    EXPECT_EQ(port.super_frames, 199U);
    EXPECT_EQ(port.broken_super_frames.count(), 1U);
    // Row 700 is row 50 of super frame 10; the 14 rows behind it have lost their place.
    EXPECT_EQ(port.discarded_rows.count(), 14U);
    EXPECT_EQ(port.frame_counter_gaps.count(), 1U);
    EXPECT_EQ(port.missing_flags.count(), 0U);
    EXPECT_TRUE(report.ports[0].clean());
}

TEST(RecordingChecker, FindsALostFirstRowOfASuperFrame) {
    const Check_Report report = check_with("lost-row:1@650");
    EXPECT_EQ(report.ports[0].counter_gaps.count(), 1U);
    EXPECT_EQ(report.ports[0].discarded_rows.count(), 64U);
    EXPECT_EQ(report.ports[0].missing_flags.count(), 0U);
    EXPECT_EQ(report.ports[0].super_frames, 199U);
}

TEST(RecordingChecker, FindsAMissingFlag) {
    const Check_Report report = check_with("missing-flag:3@20");
    const Port_Findings& port = report.ports[2];
    EXPECT_EQ(port.missing_flags.count(), 1U);
    EXPECT_EQ(port.discarded_rows.count(), 65U);
    EXPECT_EQ(port.super_frames, 199U);
    EXPECT_EQ(port.counter_gaps.count(), 0U);
    EXPECT_EQ(port.frame_counter_gaps.count(), 1U);
    EXPECT_FALSE(report.clean());
}

TEST(RecordingChecker, FindsWrongTags) {
    const Check_Report report = check_with("wrong-tag:4@3+5");
    EXPECT_EQ(report.ports[3].wrong_tags.count(), 5U);
    EXPECT_EQ(report.ports[3].super_frames, 200U);
    EXPECT_FALSE(report.clean());
}

TEST(RecordingChecker, FindsABadMarkerAndWhatItCosts) {
    // Everything from the marker to the end of the piece is given up; this recording is one short piece.
    const Check_Report report = check_with("bad-marker@1000");
    EXPECT_EQ(report.bad_markers.count(), 1U);
    EXPECT_EQ(report.given_up_rows, report.rows - 1000);
    EXPECT_FALSE(report.clean());
}

TEST(RecordingChecker, FindsRowsOfUnknownStreams) {
    const Check_Report report = check_with("unknown-row@7+3");
    EXPECT_EQ(report.unknown_rows(), 3U);
    EXPECT_FALSE(report.clean());
    EXPECT_TRUE(report.ports[0].clean());
}

TEST(RecordingChecker, FindsCutFrames) {
    const Check_Report report = check_with("cut-frame@50+2");
    EXPECT_EQ(report.rhd.cut_frames.count(), 2U);
    EXPECT_EQ(report.rhd.bad_preambles.count(), 0U);
    EXPECT_FALSE(report.clean());
}

TEST(RecordingChecker, FindsLostRHDRows) {
    // Row 100 holds the end of a frame and the preamble of the next: 700 words are 35 frames.
    const Check_Report report = check_with("lost-row:rhd@100");
    EXPECT_EQ(report.rhd.counter_gaps.count(), 1U);
    EXPECT_EQ(report.rhd.bad_preambles.count(), 1U);
    EXPECT_FALSE(report.clean());
}

TEST(RecordingChecker, FindsBytesAfterTheLastRow) {
    Recording_Options options;
    options.super_frames = 1;
    options.extra_bytes = 5;
    const Check_Report report = check(make_recording(options));
    EXPECT_EQ(report.odd_bytes, 5U);
    EXPECT_FALSE(report.clean());
}

TEST(RecordingChecker, ARecordingMayStartAnywhereInItsCounters) {
    Recording_Options options;
    options.super_frames = 200;
    Bytes recording = make_recording(options);
    // Cut off the first three super frames of every port and their seven RHD rows and 4 words.
    constexpr std::size_t rows = 7 * 260 + 20;
    recording.erase(recording.begin(), recording.begin() + static_cast<std::ptrdiff_t>(rows * 16));
    const Check_Report report = check(recording);
    EXPECT_TRUE(report.clean());
    EXPECT_EQ(report.ports[0].super_frames, 193U);
}

TEST(RecordingChecker, TakesAnyBytes) {
    std::mt19937 random(1);
    for (int round = 0; round < 4; ++round) {
        Bytes garbage(2 * mib + 12345);
        for (std::size_t i = 0; i < garbage.size(); ++i) {
            garbage[i] = static_cast<std::uint8_t>(random());
            if (i % 16 == 0 && round > 0) {
                // With markers, all rows are looked at; in the last rounds all are the same stream's.
                garbage[i] = static_cast<std::uint8_t>(round == 1 ? 0xD0 | (garbage[i] & 0x0F)
                                                                  : 0xD0 + 4 * (round - 2));
            }
        }
        const Check_Report report = check(garbage);
        EXPECT_FALSE(report.clean());
        EXPECT_EQ(report.bytes, garbage.size());
    }
}

std::vector<std::uint64_t> rows_of(const Finding& finding) {
    return {finding.first_rows().begin(), finding.first_rows().end()};
}

using Rows = std::vector<std::uint64_t>;

TEST(RecordingChecker, SaysInWhichRowsTheDamageLies) {
    // Four ports take turns: row n of port p is row 4 n + p - 1 of the file's first super frame.
    const Check_Report tags = check_with("wrong-tag:4@3+5");
    EXPECT_EQ(rows_of(tags.ports[3].wrong_tags), (Rows{15, 19, 23}));
    // The row behind the lost one tells, and two RHD rows follow the first super frame.
    const Check_Report lost = check_with("lost-row:2@70");
    EXPECT_EQ(rows_of(lost.ports[1].counter_gaps), Rows{260 + 2 + 4 * 5 + 4});
    EXPECT_EQ(rows_of(lost.ports[1].broken_super_frames), Rows{260 + 2 + 4 * 5 + 4});
    const Check_Report flag = check_with("missing-flag:1@1");
    EXPECT_EQ(rows_of(flag.ports[0].missing_flags), Rows{262});
    EXPECT_EQ(rows_of(flag.ports[0].discarded_rows), (Rows{262, 266, 270}));
    EXPECT_EQ(rows_of(check_with("bad-marker@1000").bad_markers), Rows{1000});
    const Check_Report unknown = check_with("unknown-row@7");
    std::size_t found = 0;
    for (const Unknown_Findings& findings : unknown.unknown) {
        found += rows_of(findings.found) == Rows{7} ? 1U : 0U;
    }
    EXPECT_EQ(found, 1U);
}

TEST(RecordingChecker, NamesAnRHDFrameByTheRowThatHoldsItsFirstWord) {
    // The first frame's 20 words fill two rows behind the first super frames, and go on behind the second
    // ones.
    EXPECT_EQ(rows_of(check_with("cut-frame@0").rhd.cut_frames), Rows{260});
    EXPECT_EQ(rows_of(check_with("cut-frame@1").rhd.cut_frames), Rows{260 + 2 + 260});
    // Row 100 of the stream holds a preamble. Without it the frame before, the 35th, has no end.
    const Check_Report lost = check_with("lost-row:rhd@100");
    ASSERT_EQ(rows_of(lost.rhd.bad_preambles).size(), 1U);
    EXPECT_EQ(rows_of(lost.rhd.bad_preambles).front(), 35U * 260 + 34 * 20 / 7);
}

TEST(RecordingChecker, SaysInWhichSecondTheDamageLies) {
    Recording_Options options;
    options.super_frames = 3000;
    options.faults = {parse_fault("wrong-tag:1@97500")}; // super frame 1500
    const Check_Report report = check(make_recording(options));
    ASSERT_EQ(report.ports[0].wrong_tags.first_rows().size(), 1U);
    EXPECT_NEAR(report.second_of(report.ports[0].wrong_tags.first_rows().front()), 0.05, 1e-4);
    // Rows that nobody can read have taken their time all the same.
    options.faults.push_back(parse_fault("bad-marker@70000"));
    const Check_Report gap = check(make_recording(options));
    ASSERT_EQ(gap.ports[0].wrong_tags.first_rows().size(), 1U);
    EXPECT_GT(gap.given_up_rows, 50'000U);
    EXPECT_NEAR(gap.second_of(gap.ports[0].wrong_tags.first_rows().front()), 0.05, 1e-4);
}

TEST(RecordingChecker, KnowsWhatIsNoRecording) {
    EXPECT_TRUE(check_with("").is_recording());
    EXPECT_TRUE(check_with("bad-marker~0.5").is_recording());
    EXPECT_TRUE(check_with("unknown-row~1").is_recording());
    EXPECT_FALSE(check(Bytes(3 * mib, 0)).is_recording());
    EXPECT_FALSE(check(Bytes(3 * mib, 'x')).is_recording());
    EXPECT_FALSE(check(Bytes(5, 0xD0)).is_recording());
    std::mt19937 random(1);
    Bytes noise(mib);
    for (std::uint8_t& byte : noise) {
        byte = static_cast<std::uint8_t>(random());
    }
    EXPECT_FALSE(check(noise).is_recording());
}

} // namespace
