#include "Recording_Checker.h"

#include "Check_Text.h"
#include "Recording_Generator.h"

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
    EXPECT_EQ(port.counter_gaps, 1U);
    EXPECT_EQ(port.super_frames, 199U);
    EXPECT_EQ(port.broken_super_frames, 1U);
    // Row 700 is row 50 of super frame 10; the 14 rows behind it have lost their place.
    EXPECT_EQ(port.discarded_rows, 14U);
    EXPECT_EQ(port.frame_counter_gaps, 1U);
    EXPECT_EQ(port.missing_flags, 0U);
    EXPECT_TRUE(report.ports[0].clean());
}

TEST(RecordingChecker, FindsALostFirstRowOfASuperFrame) {
    const Check_Report report = check_with("lost-row:1@650");
    EXPECT_EQ(report.ports[0].counter_gaps, 1U);
    EXPECT_EQ(report.ports[0].discarded_rows, 64U);
    EXPECT_EQ(report.ports[0].missing_flags, 0U);
    EXPECT_EQ(report.ports[0].super_frames, 199U);
}

TEST(RecordingChecker, FindsAMissingFlag) {
    const Check_Report report = check_with("missing-flag:3@20");
    const Port_Findings& port = report.ports[2];
    EXPECT_EQ(port.missing_flags, 1U);
    EXPECT_EQ(port.discarded_rows, 65U);
    EXPECT_EQ(port.super_frames, 199U);
    EXPECT_EQ(port.counter_gaps, 0U);
    EXPECT_EQ(port.frame_counter_gaps, 1U);
    EXPECT_FALSE(report.clean());
}

TEST(RecordingChecker, FindsWrongTags) {
    const Check_Report report = check_with("wrong-tag:4@3+5");
    EXPECT_EQ(report.ports[3].wrong_tags, 5U);
    EXPECT_EQ(report.ports[3].super_frames, 200U);
    EXPECT_FALSE(report.clean());
}

TEST(RecordingChecker, FindsABadMarkerAndWhatItCosts) {
    // Everything from the marker to the end of the piece is given up; this recording is one short piece.
    const Check_Report report = check_with("bad-marker@1000");
    EXPECT_EQ(report.bad_markers, 1U);
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
    EXPECT_EQ(report.rhd.cut_frames, 2U);
    EXPECT_EQ(report.rhd.bad_preambles, 0U);
    EXPECT_FALSE(report.clean());
}

TEST(RecordingChecker, FindsLostRHDRows) {
    // Row 100 holds the end of a frame and the preamble of the next: 700 words are 35 frames.
    const Check_Report report = check_with("lost-row:rhd@100");
    EXPECT_EQ(report.rhd.counter_gaps, 1U);
    EXPECT_EQ(report.rhd.bad_preambles, 1U);
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

TEST(CheckText, TellsPeopleThatNothingIsWrong) {
    Recording_Options options;
    options.super_frames = 200;
    const std::string text = text_for_people("good.bin", check(make_recording(options)));
    EXPECT_EQ(
        text,
        "good.bin: 841136 bytes, 52571 rows\n"
        "Stream         rows  row gaps discarded super frames  broken unflagged frame gaps wrong tags   "
        "seconds "
        "  packets\n"
        "port 1        13000         0         0          200       0         0          0          0     "
        "0.007 "
        "        0\n"
        "port 2        13000         0         0          200       0         0          0          0     "
        "0.007 "
        "        0\n"
        "port 3        13000         0         0          200       0         0          0          0     "
        "0.007 "
        "        0\n"
        "port 4        13000         0         0          200       0         0          0          0     "
        "0.007 "
        "        0\n"
        "Stream         rows  row gaps    frames   streams       cut bad preambles   seconds   packets\n"
        "RHD             571         0       199         0         0             0     0.007         0\n"
        "(packets: what a host receives. A recording is played in pieces of 1 MiB and a shorter last one is\n"
        "never pushed: here 841136 bytes. Of each port the last block of 1,792 super frames is dropped\n"
        "unless it is complete and one more row follows.)\n"
        "Nothing is wrong with this recording.\n");
}

TEST(CheckText, TellsPeopleWhatIsWrong) {
    Check_Report report;
    report.bad_markers = 1;
    report.given_up_rows = 10;
    report.odd_bytes = 3;
    report.unknown[7].rows = 2;
    report.ports[1].wrong_tags = 1;
    report.rhd.words_before = 4;
    const std::string text = text_for_people("bad.bin", report);
    const std::string end = "Something is wrong with this recording:\n"
                            "  1 pieces of 1 MiB hold a row without the marker\n"
                            "  10 rows are given up from there to the end of their pieces\n"
                            "  3 bytes after the last whole row\n"
                            "  2 rows of the unknown stream id 7\n"
                            "  port 2: see the table\n"
                            "  RHD: see the table\n"
                            "  4 RHD words before the first frame\n";
    ASSERT_GE(text.size(), end.size());
    EXPECT_EQ(text.substr(text.size() - end.size()), end);
}

TEST(CheckText, TellsMachinesEverything) {
    Check_Report report;
    report.bytes = 32;
    report.rows = 2;
    report.unknown[9].rows = 2;
    const std::string port =
        "\"rows\": 0, \"row_counter_gaps\": 0, \"discarded_rows\": 0, \"super_frames\": 0, "
        "\"broken_super_frames\": 0, \"missing_flags\": 0, \"frame_counter_gaps\": 0, "
        "\"wrong_tags\": 0, \"packets\": 0}";
    EXPECT_EQ(
        text_for_machines("a\"b\\c\n", report),
        "{\n  \"file\": \"a\\\"b\\\\c\\u000a\",\n  \"clean\": false,\n  \"bytes\": 32,\n  \"rows\": 2,\n"
        "  \"pieces_with_bad_marker\": 0,\n  \"given_up_rows\": 0,\n  \"odd_bytes\": 0,\n"
        "  \"bytes_never_pushed\": 0,\n  \"ports\": [\n"
        "    {\"port\": 1, " +
            port + ",\n    {\"port\": 2, " + port + ",\n    {\"port\": 3, " + port + ",\n    {\"port\": 4, " +
            port +
            "\n  ],\n"
            "  \"rhd\": {\"rows\": 0, \"row_counter_gaps\": 0, \"frames\": 0, \"streams\": 0, "
            "\"cut_frames\": 0, "
            "\"bad_preambles\": 0, \"words_before_first_frame\": 0, \"packets\": 0},\n"
            "  \"unknown\": [{\"stream\": 9, \"rows\": 2, \"row_counter_gaps\": 0}]\n}\n");
}

} // namespace
