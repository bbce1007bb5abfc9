// Raw recordings of which every sample is known, as orbe-view puts them into its histories.
#include "sources/Raw_Recording.h"

#include "Temp_Directory.h"
#include "generator/RHD_Generator.h"
#include "generator/Recording_Generator.h"
#include "numbers/Hash.h"

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <thread>
#include <vector>

namespace Pelgar::ORBE::view {

namespace {

using namespace recording;

// The decoder hands a block over with the row behind it: 4 ms at the very end stay with it.
constexpr std::uint64_t not_shown = 120;

void write(const std::filesystem::path& path, std::span<const std::uint8_t> bytes,
           std::ios::openmode mode = std::ios::trunc) {
    std::ofstream file(path, std::ios::binary | mode);
    file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    ASSERT_TRUE(file.flush());
}

Recording_Options ramps(std::uint64_t super_frames, std::vector<unsigned> ports) {
    Recording_Options options;
    options.super_frames = super_frames;
    options.ports = std::move(ports);
    options.rhd = false;
    options.signals = {parse_signal_choice("ramp")};
    return options;
}

std::int16_t ramp(int port, std::size_t channel, std::uint64_t sample) {
    const std::uint64_t place = sample + channel + 256 * static_cast<std::uint64_t>(port - 1);
    return static_cast<std::int16_t>(static_cast<int>(place % 1024) - 512);
}

recorder::Recording_Description description_of(const std::vector<unsigned>& ports, bool has_adc = false) {
    recorder::Recording_Description description;
    for (const unsigned port : ports) {
        description.probes.push_back(recorder::default_probe(static_cast<int>(port)));
    }
    if (has_adc) {
        description.adc.emplace();
    }
    return description;
}

void wait_until(const std::function<bool()>& is_so) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (!is_so()) {
        ASSERT_LT(std::chrono::steady_clock::now(), end);
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

// All that is there, from a piece on.
void show(Raw_Recording& recording, Histories& histories, std::size_t piece) {
    histories.clear();
    recording.begin(piece, histories);
    while (recording.show_next(histories)) {
    }
}

// Each sample that is there has the value of its number; answers how many there are.
std::size_t expect_ramp(const Histories& histories, std::uint64_t begin, std::uint64_t end) {
    const Probe_History::Reading reading(histories.probe(0));
    const int port = histories.probe(0).description().port;
    std::vector<Extent> values(static_cast<std::size_t>(end - begin));
    reading.band(Band::ap).extents({begin, 1, values.size()}, 17, 1, values);
    std::size_t count = 0;
    for (std::uint64_t sample = begin; sample < end; ++sample) {
        const Extent value = values[static_cast<std::size_t>(sample - begin)];
        if (!value.is_empty()) {
            const std::int16_t expected = ramp(port, 17, sample);
            EXPECT_EQ(value, (Extent{expected, expected})) << sample;
            count += value == Extent{expected, expected} ? 1U : 0U;
        }
    }
    return count;
}

class Raw_File : public testing::Test {
protected:
    const test::Temp_Directory directory;
    const std::filesystem::path path = directory.path() / "raw.bin";
};

} // namespace

TEST_F(Raw_File, ShowsTheSamplesOfAnyPieceAtTheirPlaces) {
    constexpr std::uint64_t samples = 5040;
    write(path, make_recording(ramps(samples, {2})));
    Raw_Recording recording(path, false, description_of({2}));
    wait_until([&] { return recording.known_part() == 1.0 && recording.size() == 5; });
    EXPECT_EQ(recording.problem(), "");
    EXPECT_EQ(recording.length(), samples);
    EXPECT_EQ(recording.begin_of(0), 0U);
    EXPECT_EQ(recording.begin_of(2), 2017U);
    EXPECT_FALSE(recording.begin_of(5));
    EXPECT_EQ(recording.piece_of(2016), 1U);
    EXPECT_EQ(recording.piece_of(2017), 2U);
    EXPECT_EQ(recording.piece_of(1'000'000), 4U);
    Histories histories(recording.description().probes, false, 1.0, 100.0);
    show(recording, histories, 0);
    EXPECT_GE(expect_ramp(histories, 0, samples), samples - not_shown);
    EXPECT_EQ(recording.next(), 5U);
    show(recording, histories, 3); // from the first whole packet on
    EXPECT_GE(expect_ramp(histories, 3025, samples), samples - 3025 - 12 - not_shown);
}

// Whatever is damaged where a piece begins, nothing is shown at another's place.
TEST_F(Raw_File, ShowsSamplesAtTheirPlacesWhateverIsDamagedAround) {
    Histories histories(description_of({2}).probes, false, 1.0, 100.0);
    for (const char* const fault : {"lost-row:2@65600+3", "wrong-tag:2@65538+200", "bad-marker@65566",
                                    "missing-flag:2@1009", "lost-row:2@65000+3000"}) {
        Recording_Options options = ramps(2600, {2});
        options.faults = {parse_fault(fault)};
        write(path, make_recording(options));
        Raw_Recording recording(path, false, description_of({2}));
        wait_until([&] { return recording.known_part() == 1.0 && recording.size() == 3; });
        for (const std::size_t piece : {0U, 1U}) {
            show(recording, histories, piece);
            EXPECT_GT(expect_ramp(histories, 0, 2600), 500U) << fault << " " << piece;
        }
    }
}

// The inputs of the box, with probes and without, behind lost rows of theirs.
TEST_F(Raw_File, ShowsTheInputsAtTheirPlaces) {
    for (const std::vector<unsigned>& ports : {std::vector<unsigned>{2}, std::vector<unsigned>{}}) {
        Recording_Options options = ramps(ports.empty() ? 60'000 : 3'000, ports);
        options.rhd = true;
        options.faults = {parse_fault("lost-row:rhd@2000+100")};
        write(path, make_recording(options));
        Raw_Recording recording(path, false, description_of(ports, true));
        wait_until([&] { return recording.known_part() == 1.0 && recording.size() >= 3; });
        const RHD_Generator made(0, mix(options.seed, rhd_stream));
        Histories histories(recording.description().probes, true, 5.0, 100.0);
        for (std::size_t piece = 0; piece < recording.size(); ++piece) {
            show(recording, histories, piece);
            const ADC_History::Reading reading(*histories.adc());
            std::vector<Extent> values(options.super_frames);
            reading.stream().extents({0, 1, values.size()}, 2, 1, values);
            std::size_t count = 0;
            for (std::uint64_t sample = 0; sample < values.size(); ++sample) {
                if (!values[sample].is_empty()) {
                    const auto expected = static_cast<std::int16_t>(made.adc_input(sample, 2) + 32'768);
                    ASSERT_EQ(values[sample], (Extent{expected, expected})) << piece << " " << sample;
                    ++count;
                }
            }
            EXPECT_GT(count, piece + 1 < recording.size() ? 500U : 0U) << piece;
        }
    }
}

namespace {

// Looks on until so many samples are there, which is an event of its own.
void follow(Raw_Recording& recording, Histories& histories, std::uint64_t end) {
    wait_until([&] {
        while (recording.begin_of(recording.next()) && recording.show_next(histories)) {
        }
        return Probe_History::Reading(histories.probe(0)).band(Band::ap).end() >= end;
    });
}

constexpr Growth_Patience hasty{std::chrono::milliseconds(20), std::chrono::milliseconds(40),
                                std::chrono::milliseconds(1), std::chrono::milliseconds(1)};

} // namespace

TEST_F(Raw_File, IsFinishedAndShownToItsEndOnceNothingIsWrittenAnyMore) {
    constexpr std::uint64_t samples = 2600; // two pieces and a half
    const auto bytes = make_recording(ramps(samples, {2}));
    write(path, bytes);
    std::filesystem::last_write_time(path,
                                     std::filesystem::file_time_type::clock::now() + std::chrono::hours(1));
    Raw_Recording recording(path, true, description_of({2}), hasty);
    EXPECT_TRUE(recording.grows() || recording.known_part() == 1.0);
    wait_until([&] { return recording.size() == 3 && !recording.grows(); });
    EXPECT_EQ(recording.length(), samples);
    EXPECT_EQ(recording.known_part(), 1.0);
    EXPECT_EQ(recording.begin_of(2), 2017U);
    EXPECT_EQ(recording.piece_of(2500), 2U);
    Histories histories(recording.description().probes, false, 1.0, 100.0);
    show(recording, histories, 0);
    EXPECT_EQ(recording.next(), 3U);
    EXPECT_GE(expect_ramp(histories, 0, samples), samples - not_shown);
}

TEST_F(Raw_File, ThatIsOldIsFinishedFromTheBeginning) {
    write(path, make_recording(ramps(1100, {2})));
    std::filesystem::last_write_time(path,
                                     std::filesystem::file_time_type::clock::now() - std::chrono::hours(1));
    Raw_Recording recording(path, true, description_of({2})); // with the patience that people get
    EXPECT_FALSE(recording.grows());
    wait_until([&] { return recording.size() == 2; });
    EXPECT_EQ(recording.length(), 1100U);
    EXPECT_FALSE(recording.grows());
}

TEST_F(Raw_File, IsFollowedOnWhenItGrowsAgain) {
    constexpr std::uint64_t samples = 4000;
    const auto bytes = make_recording(ramps(samples, {2}));
    const std::span<const std::uint8_t> all(bytes);
    const auto rows = [](std::size_t super_frames) {
        return super_frames * rows_per_super_frame * row_bytes;
    };
    write(path, all.first(rows(1500) + 7)); // within a row
    Raw_Recording recording(path, true, description_of({2}), hasty);
    Histories histories(recording.description().probes, false, 1.0, 100.0);
    wait_until([&] { return recording.size() == 2 && !recording.grows(); });
    recording.begin(0, histories);
    follow(recording, histories, 1500 - not_shown);
    EXPECT_EQ(recording.next(), 2U);
    // Within the piece whose beginning has been shown, up to its end, and beyond.
    write(path, all.subspan(rows(1500) + 7, rows(300)), std::ios::app);
    follow(recording, histories, 1800 - not_shown);
    EXPECT_EQ(recording.begin_of(1), 1009U);
    EXPECT_EQ(recording.size(), 2U);
    write(path, all.subspan(rows(1800) + 7), std::ios::app);
    follow(recording, histories, samples - not_shown);
    wait_until([&] { return recording.size() == 4 && !recording.grows(); });
    EXPECT_EQ(recording.length(), samples);
    EXPECT_GE(expect_ramp(histories, 0, samples), samples - not_shown);
    EXPECT_EQ(Probe_History::Reading(histories.probe(0)).lost_samples(), 0U);
}

TEST_F(Raw_File, TellsOfItsDamageInTheRestAsWell) {
    Recording_Options options = ramps(1500, {2});
    options.faults = {parse_fault("lost-row:2@20000"), parse_fault("lost-row:2@90000"),
                      parse_fault("wrong-tag:2@90500+4")};
    write(path, make_recording(options));
    Raw_Recording recording(path, true, description_of({2}), hasty);
    wait_until([&] { return recording.size() == 2; });
    const auto damage = recording.damage(15);
    std::vector<Damage_Counts> expected(15);
    expected[0] = {1, 1, 0, 0, 0};
    expected[10] = {1, 1, 4, 0, 0};
    for (std::size_t stretch = 0; stretch < damage.size(); ++stretch) {
        EXPECT_EQ(damage[stretch].row_gaps, expected[stretch].row_gaps) << stretch;
        EXPECT_EQ(damage[stretch].wrong_tags, expected[stretch].wrong_tags) << stretch;
    }
}

TEST_F(Raw_File, ThatIsNotThereIsAProblem) {
    Raw_Recording recording(path, true, description_of({2}), hasty);
    wait_until([&] { return !recording.problem().empty(); });
    EXPECT_EQ(recording.problem(), "cannot read '" + path.string() + "'");
}

} // namespace Pelgar::ORBE::view
