#include "checker/Check_Text.h"

#include "checker/Recording_Checker.h"
#include "generator/Recording_Generator.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

using namespace Pelgar::ORBE::recording;

constexpr std::size_t no_limit = 1000;

Check_Report good_report() {
    Recording_Options options;
    options.super_frames = 200;
    Recording_Checker checker;
    checker.look_at_rest(make_recording(options));
    return checker.report();
}

Finding found_in(std::initializer_list<std::uint64_t> rows) {
    Finding finding;
    for (const std::uint64_t row : rows) {
        finding.note(row);
    }
    return finding;
}

Check_Report bad_report() {
    Check_Report report;
    report.bytes = 480'003;
    report.rows = 30'000;
    report.ports[1].rows = 6'500;
    report.bad_markers = found_in({20'000});
    report.given_up_rows = 10'000;
    report.odd_bytes = 3;
    report.unknown[7].rows = 2;
    report.unknown[7].found = found_in({4, 5});
    report.ports[1].wrong_tags = found_in({200, 400, 600, 800});
    report.rhd.cut_frames = found_in({300});
    report.rhd.words_before = 1;
    return report;
}

TEST(CheckText, TellsPeopleThatNothingIsWrong) {
    EXPECT_EQ(
        text_for_people("good.bin", good_report(), no_limit),
        "good.bin: 841136 bytes, 52571 rows\n"
        "                           port 1  port 2  port 3  port 4\n"
        "rows                        13000   13000   13000   13000\n"
        "gaps in the row counter         0       0       0       0\n"
        "rows discarded                  0       0       0       0\n"
        "super frames                  200     200     200     200\n"
        "super frames broken off         0       0       0       0\n"
        "super frames without flag       0       0       0       0\n"
        "gaps in the frame counter       0       0       0       0\n"
        "wrong tags                      0       0       0       0\n"
        "seconds                     0.007   0.007   0.007   0.007\n"
        "packets                         0       0       0       0\n"
        "     rows  row gaps  frames  streams  cut  bad preambles  seconds  packets\n"
        "RHD   571         0     199        0    0              0    0.007        0\n"
        "(packets: what a host receives. A recording is played in pieces of 1 MiB and a shorter last one is\n"
        "never pushed: here 841136 bytes. Of each port the last block of 1,792 super frames is dropped "
        "unless\n"
        "it is complete and one more row follows.)\n"
        "Nothing is wrong with this recording.\n");
}

TEST(CheckText, TellsPeopleWhatIsWrongAndWhere) {
    const std::string text = text_for_people("bad.bin", bad_report(), no_limit);
    // 6,500 rows of a port are 100 super frames, which last 3.3 ms; 20,000 rows could be read.
    const std::string end = "Something is wrong with this recording:\n"
                            "  1 piece of 1 MiB holds a row without the marker, row 20000 (0.003 s)\n"
                            "  10000 rows are given up from there to the end of its piece\n"
                            "  3 bytes after the last whole row, row 30000 (0.005 s)\n"
                            "  2 rows of the unknown stream id 7, rows 4 (0.000 s), 5 (0.000 s)\n"
                            "  port 2: 4 words with a wrong lane tag, rows 200 (0.000 s), 400 (0.000 s), "
                            "600 (0.000 s), ...\n"
                            "  RHD: 1 frame is cut short, row 300 (0.000 s)\n"
                            "  RHD: 1 word before the first frame\n";
    EXPECT_TRUE(text.ends_with(end)) << text;
}

TEST(CheckText, NoLineIsLongerThanTheTerminal) {
    for (const std::size_t width : {80U, 60U, 40U}) {
        std::istringstream lines(text_for_people("bad.bin", bad_report(), width));
        for (std::string line; std::getline(lines, line);) {
            EXPECT_LE(line.size(), width) << line;
        }
    }
    // Where the table does not fit, its lines are written out.
    EXPECT_NE(text_for_people("bad.bin", bad_report(), 40).find("rows\n  port 1: 0\n  port 2: 6500\n"),
              std::string::npos);
}

TEST(CheckText, TellsMachinesEverything) {
    Check_Report report = bad_report();
    report.bad_markers = {};
    report.odd_bytes = 0;
    report.rhd = {};
    const std::string port =
        "\"rows\": 0, \"row_counter_gaps\": 0, \"discarded_rows\": 0, \"super_frames\": 0, "
        "\"broken_super_frames\": 0, \"missing_flags\": 0, \"frame_counter_gaps\": 0, "
        "\"wrong_tags\": 0, \"packets\": 0}";
    EXPECT_EQ(
        text_for_machines("a\"b\\c\n", report),
        "{\n  \"file\": \"a\\\"b\\\\c\\u000a\",\n  \"clean\": false,\n  \"bytes\": 480003,\n  \"rows\": "
        "30000,\n"
        "  \"pieces_with_bad_marker\": 0,\n  \"given_up_rows\": 10000,\n  \"odd_bytes\": 0,\n"
        "  \"bytes_never_pushed\": 0,\n  \"ports\": [\n"
        "    {\"port\": 1, " +
            port +
            ",\n    {\"port\": 2, \"rows\": 6500, \"row_counter_gaps\": 0, \"discarded_rows\": 0, "
            "\"super_frames\": 0, \"broken_super_frames\": 0, \"missing_flags\": 0, \"frame_counter_gaps\": "
            "0, "
            "\"wrong_tags\": 4, \"packets\": 0},\n    {\"port\": 3, " +
            port + ",\n    {\"port\": 4, " + port +
            "\n  ],\n"
            "  \"rhd\": {\"rows\": 0, \"row_counter_gaps\": 0, \"frames\": 0, \"streams\": 0, "
            "\"cut_frames\": 0, \"bad_preambles\": 0, \"words_before_first_frame\": 0, \"packets\": 0},\n"
            "  \"unknown\": [{\"stream\": 7, \"rows\": 2, \"row_counter_gaps\": 0}],\n"
            "  \"damage\": [\n"
            "    {\"stream\": \"\", \"kind\": \"given_up_rows\", \"count\": 10000, \"first\": []},\n"
            "    {\"stream\": \"\", \"kind\": \"unknown_rows\", \"count\": 2, \"first\": [{\"row\": 4, "
            "\"second\": "
            "0.000}, {\"row\": 5, \"second\": 0.000}]},\n"
            "    {\"stream\": \"port 2\", \"kind\": \"wrong_tags\", \"count\": 4, \"first\": [{\"row\": 200, "
            "\"second\": 0.000}, {\"row\": 400, \"second\": 0.000}, {\"row\": 600, \"second\": "
            "0.000}]}]\n}\n");
}

TEST(Finding, RemembersTheFirstRowsOnce) {
    const Finding finding = found_in({3, 3, 4, 9, 9, 10});
    EXPECT_EQ(finding.count(), 6U);
    EXPECT_EQ(std::vector<std::uint64_t>(finding.first_rows().begin(), finding.first_rows().end()),
              (std::vector<std::uint64_t>{3, 4, 9}));
}

TEST(Finding, AddsWhatWasFoundInOtherRowsInTheirOrder) {
    Finding finding = found_in({5, 8});
    finding.add(found_in({1, 7, 9, 11}));
    EXPECT_EQ(finding.count(), 6U);
    EXPECT_EQ(std::vector<std::uint64_t>(finding.first_rows().begin(), finding.first_rows().end()),
              (std::vector<std::uint64_t>{1, 5, 7}));
}

} // namespace
