#include "generator/Fault_Check.h"

#include "generator/Recording_Generator.h"
#include "generator/Recording_Size.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace Pelgar::ORBE::recording;

Recording_Options of_super_frames(std::uint64_t count, std::vector<unsigned> ports = {1, 2, 3, 4}) {
    Recording_Options options;
    options.super_frames = count;
    options.ports = std::move(ports);
    return options;
}

Recording_Options of_blocks(std::uint64_t count, std::vector<unsigned> ports, unsigned rhd_streams) {
    Recording_Options options;
    options.blocks = count;
    options.ports = std::move(ports);
    options.rhd_streams = rhd_streams;
    return options;
}

// What the recording really holds, counted row by row.
Recording_Size counted_size(const Recording_Options& options) {
    const std::vector<std::uint8_t> recording = make_recording(options);
    Recording_Size size;
    size.bytes = recording.size();
    for (std::size_t at = 0; at + 16 <= recording.size() - options.extra_bytes; at += 16) {
        const unsigned id = recording[at] & 0xFU;
        Stream_Size& stream = size.streams.at(id);
        ++stream.rows;
        stream.super_frames += id < 4 && (recording[at + 3] & 0x08U) != 0 ? 1U : 0U;
    }
    return size;
}

TEST(RecordingSize, IsWhatTheGeneratorWrites) {
    std::vector<Recording_Options> all{
        of_super_frames(1),   of_super_frames(100, {2, 4}), of_blocks(1, {1, 2, 3, 4}, 0),
        of_blocks(1, {3}, 0), of_blocks(1, {1, 3, 4}, 5),   of_blocks(1, {2}, 32)};
    all.push_back(of_super_frames(50, {}));
    all.push_back(of_blocks(1, {1, 2}, 0));
    all.back().rhd = false;
    all.push_back(of_super_frames(3));
    all.back().extra_bytes = 7;
    for (std::size_t i = 0; i < all.size(); ++i) {
        const Recording_Size told = size_of(all[i]);
        const Recording_Size counted = counted_size(all[i]);
        EXPECT_EQ(told.bytes, counted.bytes) << i;
        for (std::size_t stream = 0; stream < told.streams.size(); ++stream) {
            EXPECT_EQ(told.streams[stream].rows, counted.streams[stream].rows) << i << " " << stream;
            EXPECT_EQ(told.streams[stream].super_frames, counted.streams[stream].super_frames)
                << i << " " << stream;
        }
    }
}

std::string refusal(const Recording_Options& options, const std::vector<std::string>& faults) {
    Recording_Options damaged = options;
    for (const std::string& fault : faults) {
        damaged.faults.push_back(parse_fault(fault));
    }
    try {
        const Recording_Generator generator(damaged);
    } catch (const std::invalid_argument& error) {
        return error.what();
    }
    return "accepted";
}

TEST(FaultCheck, RefusesWhatLiesBeyondTheEnd) {
    const Recording_Options options = of_super_frames(10);
    EXPECT_EQ(refusal(options, {"lost-row:1@649"}), "accepted");
    EXPECT_EQ(refusal(options, {"lost-row:1@640+10"}), "accepted");
    const std::string rows_of_port = "lies beyond the end: there are 650 rows, counted from 0";
    for (const std::string fault :
         {"lost-row:1@650", "lost-row:1@640+11", "lost-row:1@18446744073709551615+2",
          "lost-row:1@2+18446744073709551615"}) {
        EXPECT_EQ(refusal(options, {fault}), "fault '" + fault + "' " + rows_of_port);
    }
    // Four ports and 28 RHD rows.
    EXPECT_EQ(refusal(options, {"bad-marker@2627"}), "accepted");
    EXPECT_EQ(refusal(options, {"bad-marker@2628"}),
              "fault 'bad-marker@2628' lies beyond the end: there are 2628 rows, counted from 0");
    EXPECT_EQ(
        refusal(options, {"missing-flag@40"}),
        "fault 'missing-flag@40' lies beyond the end: there are 40 rows that start a super frame, counted "
        "from 0");
    EXPECT_EQ(refusal(options, {"cut-frame@10"}),
              "fault 'cut-frame@10' lies beyond the end: there are 10 RHD frames, counted from 0");
    EXPECT_EQ(refusal(options, {"wrong-tag@2600"}),
              "fault 'wrong-tag@2600' lies beyond the end: there are 2600 rows of probes, counted from 0");
}

TEST(FaultCheck, RefusesWhatStrikesNothing) {
    const Recording_Options options = of_super_frames(10, {1});
    EXPECT_EQ(refusal(options, {"lost-row:3~0.5"}),
              "fault 'lost-row:3~0.5' strikes nothing: the recording has no rows there");
    EXPECT_EQ(refusal(options, {"cut-frame:1~0.5"}),
              "fault 'cut-frame:1~0.5' strikes nothing: the recording has no RHD frames there");
    EXPECT_EQ(refusal(options, {"missing-flag:rhd@0"}),
              "fault 'missing-flag:rhd@0' strikes nothing: the recording "
              "has no rows that start a super frame there");
    EXPECT_EQ(refusal(of_super_frames(10, {}), {"wrong-tag~0.5"}),
              "fault 'wrong-tag~0.5' strikes nothing: the recording has no rows of probes");
    EXPECT_EQ(refusal(options, {"lost-row@1+0"}), "fault 'lost-row@1+0' strikes nothing: its count is 0");
}

TEST(FaultCheck, RefusesWhatLeavesNothing) {
    const std::string start = "these faults leave nothing that reaches a host: ";
    const Recording_Options options = of_super_frames(10);
    EXPECT_EQ(refusal(options, {"lost-row~1"}), start + "'lost-row~1'");
    EXPECT_EQ(refusal(options, {"lost-row@0+2628"}), start + "'lost-row@0+2628'");
    EXPECT_EQ(refusal(options, {"bad-marker~1"}), start + "'bad-marker~1'");
    EXPECT_EQ(refusal(options, {"bad-marker:2~1"}), start + "'bad-marker:2~1'");
    EXPECT_EQ(refusal(options, {"missing-flag~1", "wrong-tag~1", "cut-frame~1"}),
              start + "'missing-flag~1', 'cut-frame~1'");
    EXPECT_EQ(refusal(of_super_frames(10, {}), {"cut-frame~1"}), start + "'cut-frame~1'");
    // Written in blocks such a recording would never end.
    EXPECT_EQ(refusal(of_blocks(1, {1}, 0), {"lost-row~1"}), start + "'lost-row~1'");
}

TEST(FaultCheck, AcceptsWhatLeavesSomething) {
    const Recording_Options options = of_super_frames(10);
    for (const std::string fault :
         {"lost-row:1~1", "missing-flag~1", "cut-frame~1", "wrong-tag~1", "unknown-row~1", "lost-row~0.99"}) {
        EXPECT_EQ(refusal(options, {fault}), "accepted") << fault;
    }
}

} // namespace
