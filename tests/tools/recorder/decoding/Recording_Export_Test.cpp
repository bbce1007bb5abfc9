#include "decoding/Recording_Export.h"

#include "Read_Samples.h"
#include "formats/Gap_Table.h"
#include "formats/Make_Writer.h"
#include "generator/Recording_Generator.h"
#include "signals/Channel_Signal.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <fstream>
#include <stdexcept>
#include <thread>

namespace {

using namespace Pelgar::ORBE;
using recorder::A_Recording_Writer;
using recorder::Export_Source;
using recorder::Format;
using recorder::Recording_Description;
using test::Sample_Table;

recording::Recording_Options ramps(std::uint64_t super_frames) {
    recording::Recording_Options options;
    options.super_frames = super_frames;
    options.signals = {recording::parse_signal_choice("ramp")};
    return options;
}

void write_raw(const std::vector<std::uint8_t>& bytes) {
    std::ofstream file("raw.bin", std::ios::binary);
    file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

Export_Source source_of(const std::vector<int>& ports) {
    Export_Source source;
    source.raw = "raw.bin";
    for (const int port : ports) {
        source.description.probes.push_back(recorder::default_probe(port));
    }
    source.description.adc = recorder::ADC_Description{};
    source.gain_files.resize(ports.size());
    return source;
}

std::unique_ptr<A_Recording_Writer> export_to(const std::filesystem::path& folder,
                                              const Export_Source& source, Format format = Format::spikeglx) {
    auto writer = recorder::make_writer(format, folder, source.description);
    EXPECT_TRUE(recorder::export_recording(source, *writer, [](std::uint64_t) { return true; }));
    return writer;
}

std::string ap_file(const std::string& run, std::size_t probe) {
    const std::string name = "imec" + std::to_string(probe);
    return run + "/" + run + "_g0/" + run + "_g0_" + name + "/" + run + "_g0_t0." + name + ".ap.bin";
}

std::string lfp_file(const std::string& run, std::size_t probe) {
    std::string name = ap_file(run, probe);
    return name.replace(name.rfind(".ap."), 4, ".lf.");
}

// Rows of a band that are not what the recording was made of, those that `is_lost` names apart.
template <typename Is_Lost>
std::size_t differing_rows(const Sample_Table& table, recording::Band band, unsigned port, Is_Lost is_lost) {
    recording::Channel_Signal signal({recording::parse_signal_choice("ramp")}, 0.0, port, 1);
    std::array<std::uint16_t, recording::channel_count> values{};
    std::size_t differing = 0;
    for (std::size_t row = 0; row < table.rows(); ++row) {
        signal.fill(band, row, values);
        bool differs = false;
        for (std::size_t channel = 0; channel < recording::channel_count; ++channel) {
            const int expected = is_lost(row) ? 0 : values[channel] - 512;
            differs = differs || table.at(row, channel) != expected;
        }
        differing += differs ? 1U : 0U;
    }
    return differing;
}

bool none(std::uint64_t /*row*/) {
    return false;
}

TEST(Recording_Export, HasEverySampleThatTheRecordingWasMadeOf) {
    write_raw(recording::make_recording(ramps(6'000)));
    const auto writer = export_to("run", source_of({1, 2, 3, 4}));
    for (unsigned port = 1; port <= 4; ++port) {
        const Sample_Table ap(ap_file("run", port - 1), 385);
        // Whole blocks of 120 super frames, behind each of which another row has come.
        EXPECT_EQ(ap.rows(), 5'880U);
        EXPECT_EQ(differing_rows(ap, recording::Band::ap, port, none), 0U);
        const Sample_Table lfp(lfp_file("run", port - 1), 385);
        EXPECT_EQ(lfp.rows(), 490U);
        EXPECT_EQ(differing_rows(lfp, recording::Band::lfp, port, none), 0U);
        EXPECT_EQ(writer->lost_samples(port - 1), 0U);
    }
    EXPECT_EQ(writer->samples(4), 5'999U);
    EXPECT_EQ(recorder::read_file("run/gaps.csv"), recorder::gap_table_head);
}

TEST(Recording_Export, GivesTheSameBytesAgain) {
    recording::Recording_Options options = ramps(12'000);
    options.ports = {2};
    write_raw(recording::make_recording(options));
    export_to("first", source_of({2}));
    export_to("again", source_of({2}));
    EXPECT_EQ(recorder::read_file(ap_file("first", 0)), recorder::read_file(ap_file("again", 0)));
    EXPECT_EQ(recorder::read_file("first/first_g0/first_g0_t0.obx0.obx.bin"),
              recorder::read_file("again/again_g0/again_g0_t0.obx0.obx.bin"));
}

// The sync input is TTL input 1, which the generator lets follow its seed.
TEST(Recording_Export, HasTheSyncLevelOfTheSameSampleInAllStreams) {
    recording::Recording_Options options = ramps(6'000);
    options.ports = {1, 4};
    write_raw(recording::make_recording(options));
    export_to("run", source_of({1, 4}));
    const Sample_Table adc("run/run_g0/run_g0_t0.obx0.obx.bin", 14);
    std::size_t edges = 0;
    for (std::size_t probe = 0; probe < 2; ++probe) {
        const Sample_Table ap(ap_file("run", probe), 385);
        for (std::size_t row = 0; row < ap.rows(); ++row) {
            ASSERT_EQ(ap.at(row, 384), adc.at(row, 13)) << row;
            edges += row > 0 && ap.at(row, 384) != ap.at(row - 1, 384) ? 1U : 0U;
        }
    }
    EXPECT_GT(edges, 0U);
}

TEST(Recording_Export, NeedsNoADCInputs) {
    recording::Recording_Options options = ramps(3'000);
    options.rhd = false;
    write_raw(recording::make_recording(options));
    Export_Source source = source_of({3});
    source.description.adc.reset();
    export_to("run", source);
    EXPECT_EQ(differing_rows(Sample_Table(ap_file("run", 0), 385), recording::Band::ap, 3, none), 0U);
}

TEST(Recording_Export, LeavesTheSamplesOutThatAreLost) {
    recording::Recording_Options options = ramps(6'000);
    options.ports = {1};
    // A row of the super frame 1000, which has 65 of them.
    options.faults = {recording::parse_fault("lost-row:1@65010")};
    write_raw(recording::make_recording(options));
    const auto writer = export_to("run", source_of({1}));
    const std::string table = recorder::read_file("run/gaps.csv");
    EXPECT_GT(writer->lost_samples(0), 0U);
    EXPECT_LE(writer->lost_samples(0), 120U);
    unsigned long long begin = 0;
    unsigned long long length = 0;
    ASSERT_EQ(std::sscanf(table.c_str(), "stream,sample,length\nimec0.ap,%llu,%llu\n", &begin, &length), 2)
        << table;
    EXPECT_EQ(length, writer->lost_samples(0));
    EXPECT_LE(begin, 1'000U);
    EXPECT_GT(begin + length, 1'000U);
    EXPECT_EQ(differing_rows(Sample_Table(ap_file("run", 0), 385), recording::Band::ap, 1,
                             [&](std::uint64_t row) { return row >= begin && row < begin + length; }),
              0U);
}

TEST(Recording_Export, StopsWhenAllThatIsWantedIsThere) {
    write_raw(recording::make_recording(ramps(18'000)));
    Export_Source source = source_of({1, 2});
    source.description.first_sample = 1'200;
    source.description.end_sample = 2'400;
    const auto writer = recorder::make_writer(Format::open_ephys, "run", source.description);
    std::uint64_t read = 0;
    EXPECT_TRUE(recorder::export_recording(source, *writer, [&](std::uint64_t bytes) {
        read = bytes;
        return true;
    }));
    EXPECT_LT(read, std::filesystem::file_size("raw.bin") / 2);
    for (std::size_t stream = 0; stream < writer->stream_count(); ++stream) {
        EXPECT_EQ(writer->samples(stream), 1'200U);
        EXPECT_EQ(writer->lost_samples(stream), 0U);
    }
}

// Counts what comes, and takes its time.
class Slow_Writer final : public A_Recording_Writer {
public:
    std::size_t stream_count() const override { return 2; }

    std::string stream_name(std::size_t /*stream*/) const override { return "slow"; }

    void write_probe(std::size_t /*probe*/, std::span<const Neuropixels::electrodePacket> packets) override {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        m_packets += packets.size();
    }

    void write_adc(std::span<const Neuropixels::PacketInfo> infos,
                   std::span<const std::int16_t> /*rows*/) override {
        std::this_thread::sleep_for(std::chrono::microseconds(200));
        m_adc_packets += infos.size();
    }

    void finish() override {}

    std::uint64_t samples(std::size_t stream) const override {
        return stream == 0 ? m_packets : m_adc_packets;
    }

    std::uint64_t lost_samples(std::size_t /*stream*/) const override { return 0; }

    std::uint64_t bytes_written() const override { return 0; }

private:
    std::atomic<std::uint64_t> m_packets{0};
    std::atomic<std::uint64_t> m_adc_packets{0};
};

// With one stream alone the most packets come of a piece.
TEST(Recording_Export, DecodesNoFasterThanItWrites) {
    recording::Recording_Options options = ramps(24'000);
    options.ports = {1};
    options.rhd = false;
    write_raw(recording::make_recording(options));
    Slow_Writer probe_writer;
    EXPECT_TRUE(recorder::export_recording(source_of({1}), probe_writer, [](std::uint64_t) { return true; }));
    EXPECT_GE(probe_writer.samples(0), (24'000U - 120U) / 12);

    options = ramps(150'000);
    options.ports.clear();
    write_raw(recording::make_recording(options));
    Slow_Writer adc_writer;
    EXPECT_TRUE(recorder::export_recording(source_of({}), adc_writer, [](std::uint64_t) { return true; }));
    EXPECT_EQ(adc_writer.samples(1), 149'999U);
}

TEST(Recording_Export, StopsWhenTheUserSaysSo) {
    write_raw(recording::make_recording(ramps(12'000)));
    const Export_Source source = source_of({1});
    const auto writer = recorder::make_writer(Format::spikeglx, "run", source.description);
    EXPECT_FALSE(
        recorder::export_recording(source, *writer, [](std::uint64_t bytes) { return bytes < 3'000'000; }));
    const Sample_Table ap(ap_file("run", 0), 385);
    EXPECT_GT(ap.rows(), 0U);
    EXPECT_LT(ap.rows(), 11'000U);
    EXPECT_EQ(ap.rows(), writer->samples(0));
}

TEST(Recording_Export, CorrectsTheGainAsTheLibraryDoes) {
    write_raw(recording::make_recording(ramps(1'200)));
    {
        std::ofstream file("gains.csv", std::ios::binary);
        file << "1234\n";
        for (int electrode = 0; electrode < 960; ++electrode) {
            file << electrode;
            // Of the gains 500 and 250 that the probe has, and no other.
            for (const char* factor :
                 {"1", "1", "1", "0.5", "1", "1", "1", "1", "1", "1", "0.25", "1", "1", "1", "1", "1"}) {
                file << "," << factor;
            }
            file << "\n";
        }
    }
    export_to("plain", source_of({1}));
    Export_Source source = source_of({1});
    source.gain_files[0] = "gains.csv";
    export_to("run", source);
    const Sample_Table plain(ap_file("plain", 0), 385);
    const Sample_Table ap(ap_file("run", 0), 385);
    ASSERT_GT(ap.rows(), 1'000U);
    for (std::size_t row = 0; row < ap.rows(); ++row) {
        ASSERT_EQ(ap.at(row, 200), plain.at(row, 200) / 2) << row;
    }
    const Sample_Table plain_lfp(lfp_file("plain", 0), 385);
    EXPECT_EQ(Sample_Table(lfp_file("run", 0), 385).at(50, 77), plain_lfp.at(50, 77) / 4);
    source.gain_files[0] = "raw.bin";
    const auto writer = recorder::make_writer(Format::spikeglx, "bad", source.description);
    EXPECT_THROW(recorder::export_recording(source, *writer, [](std::uint64_t) { return true; }),
                 std::runtime_error);
}

TEST(Raw_Content, IsWhatTheRecordingBeginsWith) {
    recording::Recording_Options options = ramps(300);
    options.ports = {2, 4};
    write_raw(recording::make_recording(options));
    const recorder::Raw_Content content = recorder::raw_content("raw.bin");
    EXPECT_EQ(content.ports, (std::vector<int>{2, 4}));
    EXPECT_TRUE(content.has_adc);
    write_raw(std::vector<std::uint8_t>(1'000, 0x20));
    EXPECT_THROW(recorder::raw_content("raw.bin"), std::runtime_error);
    EXPECT_THROW(recorder::raw_content("nothing.bin"), std::system_error);
    EXPECT_THROW(recorder::raw_content("."), std::system_error);
}

} // namespace
