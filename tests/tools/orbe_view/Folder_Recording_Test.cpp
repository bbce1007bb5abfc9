// Folders of which every sample is known, as orbe-view puts them into its histories.
#include "sources/Folder_Recording.h"

#include "Format_Name.h"
#include "Made_Recording.h"
#include "Temp_Directory.h"
#include "description/Whole_File.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <set>

namespace Pelgar::ORBE::view {

namespace {

using recorder::Format;
using Clock = Folder_Recording::Clock;
using namespace std::chrono_literals;

constexpr std::size_t looked_at[] = {0, 7, 191, 383};
// The second probe ends within a packet.
constexpr std::uint64_t end_of_second_probe = 11'997;

void make_old(const std::filesystem::path& folder) {
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
        if (entry.is_regular_file()) {
            std::filesystem::last_write_time(entry.path(),
                                             std::filesystem::file_time_type::clock::now() - 1h);
        }
    }
}

Folder_Layout layout_in(const std::filesystem::path& folder) {
    return layout_of(folder, recorder::read_description(folder));
}

// For all tests that keep all channels, because it takes a while to get so much memory.
Histories& made_histories() {
    static Histories histories(test::made_description().probes, true, 10.0, 100.0);
    histories.clear();
    return histories;
}

void show(Folder_Recording& recording, Histories& histories, std::size_t piece = 0) {
    recording.begin(piece, histories);
    while (recording.show_next(histories)) {
    }
}

// One value of the rows, each by itself.
std::vector<Extent> values_of(const Stream_History& stream, std::uint64_t begin, std::uint64_t end,
                              std::size_t value) {
    std::vector<Extent> values(static_cast<std::size_t>(end - begin));
    stream.extents({begin, 1, values.size()}, value, 1, values);
    return values;
}

std::uint64_t lost_in(const Stream_History& stream, std::uint64_t begin, std::uint64_t end) {
    std::vector<std::uint32_t> lost(static_cast<std::size_t>(end - begin));
    stream.lost({begin, 1, lost.size()}, lost);
    return static_cast<std::uint64_t>(std::count(lost.begin(), lost.end(), 1U));
}

Extent one(std::int16_t value) {
    return {value, value};
}

void expect_ap(const Histories& histories, std::size_t probe, std::uint64_t begin, std::uint64_t end) {
    const Probe_History::Reading reading(histories.probe(probe));
    const int port = histories.probe(probe).description().port;
    for (const std::size_t channel : looked_at) {
        const auto values = values_of(reading.band(Band::ap), begin, end, channel);
        for (std::uint64_t sample = begin; sample < end; ++sample) {
            const bool is_lost = probe == 1 && test::lost_of_second_probe.has(sample);
            const bool is_before = probe == 1 && sample < test::second_probe_begins;
            const Extent expected =
                is_lost ? Extent()
                        : one(is_before ? std::int16_t{0}
                                        : test::ap_value(port, static_cast<int>(channel), sample));
            ASSERT_EQ(values[sample - begin], expected) << probe << " " << channel << " " << sample;
        }
    }
}

// The band has a sample for each packet, at the nearest place.
void expect_lfp(const Histories& histories, std::size_t probe) {
    const Probe_History::Reading reading(histories.probe(probe));
    const int port = histories.probe(probe).description().port;
    const std::uint64_t begin = probe == 1 ? test::second_probe_begins : 0;
    const auto packets = test::made_packets(port, begin, test::made_samples, [&](std::uint64_t sample) {
        return probe == 1 && test::lost_of_second_probe.has(sample);
    });
    std::set<std::uint64_t> places;
    for (const auto& packet : packets) {
        const std::uint64_t sample = (std::uint64_t{packet.timestamp[0]} * 3 + 9) / 10;
        const std::uint64_t place = (sample - begin + 6) / 12;
        places.insert(place);
        for (const std::size_t channel : looked_at) {
            ASSERT_EQ(values_of(reading.band(Band::lfp), place, place + 1, channel)[0],
                      one(test::lfp_value(port, static_cast<int>(channel), sample / 12)))
                << channel << " " << place;
        }
    }
    EXPECT_EQ(lost_in(reading.band(Band::lfp), 0, *places.rbegin() + 1),
              *places.rbegin() + 1 - places.size());
}

void expect_adc(const Histories& histories, std::uint64_t begin, std::uint64_t end) {
    const ADC_History::Reading reading(*histories.adc());
    for (std::size_t lane = 0; lane < ADC_History::width; ++lane) {
        const auto values = values_of(reading.stream(), begin, end, lane);
        for (std::uint64_t sample = begin; sample < end; ++sample) {
            const bool is_analog = lane < ADC_History::analog_inputs;
            const auto value =
                is_analog ? test::adc_value(static_cast<int>(lane), sample)
                          : static_cast<std::int16_t>(test::comparator_level(static_cast<int>(lane), sample));
            ASSERT_EQ(values[sample - begin], test::lost_of_adc.has(sample) ? Extent() : one(value))
                << lane << " " << sample;
        }
    }
}

class Folder : public testing::TestWithParam<std::string> {
protected:
    Format format() const { return recorder::format_of(GetParam()).value(); }

    bool is_spikeglx() const { return format() == Format::spikeglx; }

    // Made, and as if it had been for long.
    std::filesystem::path make(const recorder::Recording_Description& description) const {
        test::make_recording(format(), path, description);
        make_old(path);
        return path;
    }

    std::filesystem::path continuous(const std::string& stream) const {
        return path / "Record Node 101/experiment1/recording1/continuous" / stream / "continuous.dat";
    }

    std::filesystem::path structure() const {
        return path / "Record Node 101/experiment1/recording1/structure.oebin";
    }

    std::string problem_of_opening() const {
        try {
            const Folder_Recording recording(layout_in(path));
        } catch (const std::exception& error) {
            return error.what();
        }
        return {};
    }

    const test::Temp_Directory directory;
    const std::filesystem::path path = directory.path() / "run";
    const Clock::time_point start = Clock::now();
};

} // namespace

TEST_P(Folder, ShowsEverySampleOfEveryStreamAndWhatIsLost) {
    Folder_Recording recording(layout_in(make(test::made_description())), start);
    EXPECT_EQ(recording.name(), "run");
    EXPECT_EQ(recording.problem(), "");
    EXPECT_FALSE(recording.grows());
    EXPECT_EQ(recording.length(), test::made_samples);
    EXPECT_EQ(recording.size(), test::made_samples / 600);
    EXPECT_EQ(recording.begin_of(3), 1800U);
    EXPECT_FALSE(recording.begin_of(recording.size()));
    EXPECT_EQ(recording.piece_of(1799), 2U);
    EXPECT_EQ(recording.piece_of(1'000'000), recording.size() - 1);
    Histories& histories = made_histories();
    const std::uint64_t lost = Probe_History::Reading(histories.probe(1)).lost_samples();
    const std::uint64_t samples = Probe_History::Reading(histories.probe(1)).samples();
    const std::uint64_t adc_lost = ADC_History::Reading(*histories.adc()).lost_samples();
    show(recording, histories);
    expect_ap(histories, 0, 0, test::made_samples);
    expect_ap(histories, 1, 0, end_of_second_probe);
    expect_lfp(histories, 0);
    expect_lfp(histories, 1);
    expect_adc(histories, 0, test::made_samples);
    const Probe_History::Reading second(histories.probe(1));
    EXPECT_EQ(lost_in(second.band(Band::ap), 0, end_of_second_probe), 100U);
    EXPECT_EQ(second.lost_samples() - lost, 100U);
    EXPECT_EQ(second.samples() - samples, end_of_second_probe - 100);
    EXPECT_EQ(ADC_History::Reading(*histories.adc()).lost_samples() - adc_lost, 1U);
    // Gains are the channels' own.
    EXPECT_FLOAT_EQ(histories.probe(1).scale(Band::ap, 7), 1.2e6F / 1024 / 250);
    EXPECT_FLOAT_EQ(histories.adc()->scale(), 10.0F / 32768);
}

TEST_P(Folder, ShowsFromAnyPieceOn) {
    Folder_Recording recording(layout_in(make(test::made_description())), start);
    Histories& histories = made_histories();
    show(recording, histories, 5); // within the gap of the second probe, which is lost at once
    EXPECT_EQ(recording.next(), recording.size());
    expect_ap(histories, 0, 3000, test::made_samples);
    expect_ap(histories, 1, 3000, end_of_second_probe);
    expect_adc(histories, 3000, test::made_samples);
    const Probe_History::Reading second(histories.probe(1));
    EXPECT_EQ(second.band(Band::ap).begin(), 3000U);
    EXPECT_EQ(lost_in(second.band(Band::ap), 3000, 3200), 100U);
}

TEST_P(Folder, CountsLossesOnceWhereverOneJumps) {
    for (const bool has_adc : {true, false}) {
        auto description = test::made_description();
        if (!has_adc) {
            description.adc.reset();
        }
        std::filesystem::remove_all(path);
        Folder_Recording recording(layout_in(make(description)), start);
        Histories histories(recording.description().probes, has_adc, 10.0, 100.0);
        for (const std::size_t piece : {4U, 15U, 5U, 0U}) { // before the gap, behind it, within it
            histories.clear();
            show(recording, histories, piece);
        }
        EXPECT_EQ(histories.lost_samples(), has_adc ? 101U : 100U);
        histories.begin_anew();
        show(recording, histories);
        EXPECT_EQ(histories.lost_samples(), has_adc ? 202U : 200U);
    }
}

TEST_P(Folder, TellsOfLossesWhereTheyLieAndOfNothingElse) {
    Folder_Recording recording(layout_in(make(test::made_description())), start);
    const auto damage = recording.damage(120); // of 100 samples each
    for (std::size_t stretch = 0; stretch < damage.size(); ++stretch) {
        EXPECT_EQ(damage[stretch].lost, stretch == 30 ? 100U : stretch == 70 ? 1U : 0U) << stretch;
        EXPECT_EQ(damage[stretch].all(), damage[stretch].lost);
    }
    Histories& histories = made_histories();
    show(recording, histories);
    const Health health = recording.health_of(4, 12, histories);
    EXPECT_DOUBLE_EQ(health.seconds, 7200.0 / 30'000);
    EXPECT_DOUBLE_EQ(health.streams[0].rate, 30'000.0);
    EXPECT_DOUBLE_EQ(health.streams[0].lost_samples, 0.0);
    EXPECT_DOUBLE_EQ(health.streams[2].rate, 30'000.0 * 4700 / 4800);
    EXPECT_DOUBLE_EQ(health.streams[2].lost_samples, 100.0);
    EXPECT_DOUBLE_EQ(health.streams[port_count].rate, 30'000.0 * 4799 / 4800);
    EXPECT_DOUBLE_EQ(health.streams[port_count].lost_samples, 1.0);
    EXPECT_TRUE(std::isnan(health.streams[1].rate)); // no such port
    for (const Stream_Health& stream : health.streams) {
        for (const double value :
             {stream.row_gaps, stream.frame_gaps, stream.wrong_tags, stream.queue_fill, stream.link_lock}) {
            EXPECT_TRUE(std::isnan(value));
        }
    }
    // A gap counts once, whichever stretches are asked about.
    EXPECT_DOUBLE_EQ(recording.health_of(6, 12, histories).streams[2].lost_samples, 0.0);
}

TEST_P(Folder, PutsTheSavedChannelsInTheirPlaces) {
    auto description = test::made_description();
    description.saved_channels = {7, 100, 383};
    Folder_Recording recording(layout_in(make(description)), start);
    Histories histories(recording.description().probes, true, 10.0, 100.0,
                        recording.description().saved_channels);
    show(recording, histories);
    EXPECT_TRUE(histories.probe(0).has(7));
    EXPECT_FALSE(histories.probe(0).has(8));
    const Probe_History::Reading reading(histories.probe(0));
    for (const int channel : description.saved_channels) {
        const auto index = static_cast<std::size_t>(channel);
        EXPECT_EQ(values_of(reading.band(Band::ap), 6000, 6001, index)[0],
                  one(test::ap_value(1, channel, 6000)));
        EXPECT_EQ(values_of(reading.band(Band::lfp), 500, 501, index)[0],
                  one(test::lfp_value(1, channel, 500)));
    }
}

TEST_P(Folder, CountsFromTheFirstSampleOfTheFiles) {
    auto description = test::made_description();
    description.first_sample = 1200;
    Folder_Recording recording(layout_in(make(description)), start);
    EXPECT_EQ(recording.length(), test::made_samples - 1200);
    Histories& histories = made_histories();
    show(recording, histories);
    const ADC_History::Reading reading(*histories.adc());
    for (std::size_t lane : {0U, 3U, 8U, 11U}) {
        const auto values = values_of(reading.stream(), 0, 2000, lane);
        for (std::uint64_t place = 0; place < values.size(); ++place) {
            const auto input = static_cast<int>(lane);
            const auto value = lane < ADC_History::analog_inputs
                                   ? test::adc_value(input, place + 1200)
                                   : static_cast<std::int16_t>(test::comparator_level(input, place + 1200));
            ASSERT_EQ(values[place], one(value)) << lane << " " << place;
        }
    }
}

// What is there is shown while the writer is at work, and what comes when it has come.
TEST_P(Folder, FollowsOneThatIsBeingMade) {
    const auto description = test::made_description();
    const auto writer = recorder::make_writer(format(), path, description);
    auto now = start;
    Folder_Recording recording(layout_in(path), now);
    EXPECT_TRUE(recording.grows());
    EXPECT_EQ(recording.size(), 0U);
    Histories& histories = made_histories();
    recording.begin(0, histories);
    EXPECT_FALSE(recording.show_next(histories));

    test::write_made_packets(*writer, description);
    now += 20ms;
    recording.look(now);
    EXPECT_TRUE(recording.grows());
    const std::uint64_t length = recording.length();
    EXPECT_LT(length, test::made_samples); // the rest is in the writer's memory
    if (is_spikeglx()) {
        EXPECT_GE(length, 7'500U); // no more than a quarter of a second
    } else {
        EXPECT_EQ(length, 0U); // the edges that belong to the samples need not be there
    }
    while (recording.show_next(histories)) {
    }
    writer->finish();
    recording.look(now + 19ms); // not yet
    EXPECT_EQ(recording.length(), length);
    now += 20ms;
    recording.look(now);
    EXPECT_GE(recording.length(), length);
    now += 1s;
    recording.look(now);
    EXPECT_EQ(recording.length(), test::made_samples);
    EXPECT_TRUE(recording.grows());
    while (recording.show_next(histories)) {
    }
    expect_ap(histories, 0, 0, test::made_samples);
    expect_ap(histories, 1, 0, end_of_second_probe);
    expect_lfp(histories, 0);
    expect_lfp(histories, 1);
    expect_adc(histories, 0, test::made_samples);
    EXPECT_EQ(recording.problem(), "");
    recording.look(now + 10s);
    EXPECT_FALSE(recording.grows());
}

TEST_P(Folder, ShowsWhatAKilledRecorderHasLeft) {
    make(test::made_description());
    const auto data = Folder_Layout(layout_in(path)).streams.front().data;
    const auto row = 2 * (is_spikeglx() ? 385U : 384U);
    std::filesystem::resize_file(data, 9000 * row + 17); // within a row
    std::filesystem::remove(Folder_Layout(layout_in(path)).streams.back().data);
    make_old(path);
    Folder_Recording recording(layout_in(path), start);
    Histories& histories = made_histories();
    show(recording, histories);
    expect_ap(histories, 0, 0, 9000);
    EXPECT_EQ(Probe_History::Reading(histories.probe(0)).band(Band::ap).end(), 9000U);
    expect_ap(histories, 1, 0, end_of_second_probe);
    EXPECT_EQ(ADC_History::Reading(*histories.adc()).stream().end(), 0U);
    EXPECT_DOUBLE_EQ(recording.health_of(15, 19, histories).streams[0].rate, 0.0); // it has ended
}

TEST_P(Folder, WaitsForOneThatLagsButNotForOneThatHasEnded) {
    make(test::made_description());
    const auto streams = layout_in(path).streams;
    const std::uint64_t row_bytes = streams[0].row_length * 2;
    std::filesystem::resize_file(streams[0].data, 1200 * row_bytes);
    std::filesystem::resize_file(streams[2].data, 45'000 * row_bytes); // of the other probe
    Folder_Recording recording(layout_in(path), start);
    EXPECT_TRUE(recording.grows());
    EXPECT_EQ(recording.length(), 15'000U); // of the stream that goes on a second is kept back
    recording.look(start + 1s);
    EXPECT_EQ(recording.length(), 45'000U);
}

TEST_P(Folder, SaysWhatIsWrongWithTheTableOfGaps) {
    make(test::made_description());
    std::filesystem::remove(path / "gaps.csv");
    Folder_Recording recording(layout_in(path), start);
    EXPECT_EQ(recording.problem(),
              "cannot read '" + (path / "gaps.csv").string() + "': lost samples look like zeros");
    Histories& histories = made_histories();
    show(recording, histories);
    const Probe_History::Reading reading(histories.probe(1));
    EXPECT_EQ(values_of(reading.band(Band::ap), 3050, 3051, 0)[0], one(0));
}

TEST_P(Folder, RefusesOneWithoutSamples) {
    make(test::made_description());
    for (const Folder_Stream& stream : layout_in(path).streams) {
        std::filesystem::remove(stream.data);
    }
    EXPECT_EQ(problem_of_opening(), "'" + path.string() + "' holds no sample");
}

TEST_P(Folder, RefusesDescriptionsThatDoNotFit) {
    make(test::made_description());
    auto described = recorder::read_description(path);
    described.description.saved_channels = {1, 2};
    recorder::write_description(path, described.format, described.description);
    const std::string problem = problem_of_opening();
    EXPECT_NE(problem.find("does not belong to this folder: it has "), std::string::npos) << problem;
    EXPECT_TRUE(problem.ends_with(is_spikeglx() ? "nSavedChans 385, and the description of the folder 3"
                                                : "num_channels of ProbeA-AP 384, and the description of "
                                                  "the folder 2"))
        << problem;
    described.description = test::made_description();
    described.description.probes[1].port = 1;
    recorder::write_description(path, described.format, described.description);
    EXPECT_EQ(problem_of_opening(), "the description of '" + path.string() + "' has port 1 twice");
    described.description.probes.clear();
    described.description.adc.reset();
    recorder::write_description(path, described.format, described.description);
    EXPECT_NE(problem_of_opening(), "");
    recorder::write_description(path, "tape", test::made_description());
    EXPECT_EQ(problem_of_opening(), "'" + path.string() + "' has the format 'tape', which is not known here");
}

INSTANTIATE_TEST_SUITE_P(Formats, Folder, testing::Values("spikeglx", "open-ephys"), test::format_test_name);

namespace {

class Open_Ephys_Folder : public Folder {};

} // namespace

// An edge is written a moment behind the samples around it.
TEST_P(Open_Ephys_Folder, WaitsForTheEdgesOfTheSamples) {
    make(test::made_description());
    const auto words = layout_in(path).streams.back().lines.value() / "full_words.npy";
    const auto put_away = directory.path() / "words";
    std::filesystem::rename(words, put_away);
    std::filesystem::last_write_time(continuous("ORBE-100.ADC"),
                                     std::filesystem::file_time_type::clock::now());
    Folder_Recording recording(layout_in(path), start);
    Histories& histories = made_histories();
    show(recording, histories);
    EXPECT_EQ(ADC_History::Reading(*histories.adc()).stream().end(), 0U);
    std::filesystem::rename(put_away, words);
    recording.look(start + 1s);
    while (recording.show_next(histories)) {
    }
    expect_adc(histories, 0, test::made_samples);
}

TEST_P(Open_Ephys_Folder, RefusesFilesThatAreDamaged) {
    make(test::made_description());
    const std::string whole = recorder::read_file(structure());
    recorder::write_file(structure(), whole.substr(0, whole.size() / 2));
    EXPECT_TRUE(problem_of_opening().ends_with("; orbe-record repair mends the folder"))
        << problem_of_opening();
    recorder::write_file(structure(), whole);
    const auto words = layout_in(path).streams.back().lines.value() / "full_words.npy";
    recorder::write_file(words, std::string(200, 'x'));
    EXPECT_EQ(problem_of_opening(), "'" + words.string() + "' is no table of '<u8'");
}

INSTANTIATE_TEST_SUITE_P(Formats, Open_Ephys_Folder, testing::Values("open-ephys"), test::format_test_name);

} // namespace Pelgar::ORBE::view
