// The rows of the data sources, beside a recording of the same seed.
#include "Row_Source.h"

#include "generator/Recording_Generator.h"
#include "stream_format/Row_View.h"

#include <gtest/gtest.h>

#include <set>
#include <utility>
#include <vector>

namespace {

using namespace Pelgar::ORBE::test;
using namespace Pelgar::ORBE::recording;
using Bytes = std::vector<std::uint8_t>;

Stream_Enables everything(unsigned rhd_streams) {
    return {{true, true, true, true}, rhd_streams};
}

Bytes ticks_of(Row_Source& source, const Stream_Enables& enables, int ticks) {
    Bytes bytes;
    for (int tick = 0; tick < ticks; ++tick) {
        source.make_tick(enables);
        const auto made = source.take(std::size_t{1} << 20U);
        bytes.insert(bytes.end(), made.begin(), made.end());
    }
    return bytes;
}

TEST(Row_Source, MakesTheBytesOfARecordingWithTheSameOptions) {
    for (const unsigned rhd_streams : {0U, 3U}) {
        Recording_Options options;
        options.seed = 77;
        options.super_frames = 50;
        options.rhd_streams = rhd_streams;
        Row_Source source(options);
        EXPECT_EQ(ticks_of(source, everything(rhd_streams), 50), make_recording(options));
    }
}

TEST(Row_Source, MakesTheFaultsOfTheRecordingToo) {
    Recording_Options options;
    options.super_frames = 50;
    options.faults = {parse_fault("lost-row:2@70+3"), parse_fault("bad-marker:1~0.01")};
    Row_Source source(options);
    const Bytes bytes = ticks_of(source, everything(0), 50);
    EXPECT_EQ(bytes, make_recording(options));
    options.faults.clear();
    EXPECT_NE(bytes, make_recording(options));
}

TEST(Row_Source, OnlyEnabledSourcesMakeRows) {
    Row_Source source({});
    std::set<unsigned> streams;
    const Bytes bytes = ticks_of(source, {{false, true, false, true}, std::nullopt}, 3);
    EXPECT_EQ(bytes.size(), 3U * 2U * rows_per_super_frame * row_bytes);
    for_each_row(bytes, [&](Row_View row) { streams.insert(row.stream()); });
    EXPECT_EQ(streams, (std::set<unsigned>{1, 3}));
    EXPECT_EQ(ticks_of(source, {{}, 0U}, 7).size(), 20U * row_bytes);
}

TEST(Row_Source, StoppedProbeGoesOnWhereItWasAndARestartedOneFromTheBeginning) {
    const Stream_Enables one{{true}, std::nullopt};
    Row_Source whole({});
    const Bytes all = ticks_of(whole, one, 6);
    Row_Source parted({});
    Bytes bytes = ticks_of(parted, one, 3);
    ticks_of(parted, {{false, true}, std::nullopt}, 2);
    const Bytes rest = ticks_of(parted, one, 3);
    bytes.insert(bytes.end(), rest.begin(), rest.end());
    EXPECT_EQ(bytes, all);

    parted.restart_probe(0);
    const Bytes again = ticks_of(parted, one, 1);
    ASSERT_EQ(again.size(), rows_per_super_frame * row_bytes);
    for (std::size_t row = 0; row < rows_per_super_frame; ++row) {
        const Row_View restarted(again.data() + row * row_bytes);
        const Row_View first(all.data() + row * row_bytes);
        EXPECT_EQ(0, std::memcmp(restarted.payload(), first.payload(), row_payload_bytes));
        EXPECT_EQ(restarted.counter(), static_cast<std::uint8_t>(6 * rows_per_super_frame + row))
            << "the rows are counted by the box, not by the probe";
    }
}

TEST(Row_Source, ResetForgetsEverything) {
    Row_Source source({});
    const Bytes before = ticks_of(source, everything(2), 4);
    source.make_tick(everything(2));
    source.take(10);
    source.reset();
    EXPECT_EQ(source.take(1000).size(), 0U);
    EXPECT_EQ(ticks_of(source, everything(2), 4), before);
}

TEST(Row_Source, ReadyBytesAreTakenPieceByPiece) {
    Row_Source source({});
    source.make_tick({{true}, std::nullopt});
    EXPECT_EQ(source.take(100).size(), 100U);
    EXPECT_EQ(source.take(100000).size(), rows_per_super_frame * row_bytes - 100);
    EXPECT_EQ(source.take(1).size(), 0U);
}

TEST(Row_Source, ProbeInATestModeSendsItsPatternOrTheTone) {
    for (const auto& [output, kind] : {std::pair(Probe_Output::test_pattern, Signal_Kind::pattern),
                                       std::pair(Probe_Output::test_signal, Signal_Kind::tone)}) {
        Recording_Options options;
        options.super_frames = 20;
        options.ports = {2};
        options.rhd = false;
        options.signals = {{kind, every_channel()}};
        Row_Source source({});
        Stream_Enables enables{{false, true}, std::nullopt};
        enables.outputs[1] = output;
        EXPECT_EQ(ticks_of(source, enables, 20), make_recording(options));
    }
}

} // namespace
