#include "Made_Recording.h"
#include "Read_Samples.h"
#include "formats/Gap_Table.h"
#include "formats/Make_Writer.h"

#include <gtest/gtest.h>

#include <system_error>
#include <vector>

namespace {

using namespace Pelgar::ORBE;
using namespace Pelgar::ORBE::recorder;
using test::Sample_Table;

constexpr const char* ap_file = "run/run_g0/run_g0_imec0/run_g0_t0.imec0.ap.bin";
constexpr const char* lfp_file = "run/run_g0/run_g0_imec0/run_g0_t0.imec0.lf.bin";
constexpr const char* adc_file = "run/run_g0/run_g0_t0.obx0.obx.bin";
constexpr const char* oe_folder = "run/Record Node 101/experiment1/recording1/";

Recording_Description one_probe() {
    Recording_Description description;
    description.probes.push_back(default_probe(1));
    return description;
}

// One writer for one probe, whose samples from `begin` on have come, but for the lost ones.
template <typename Is_Lost>
std::unique_ptr<A_Recording_Writer> record_probe(Format format, const Recording_Description& description,
                                                 std::uint64_t begin, std::uint64_t end, Is_Lost is_lost) {
    auto writer = make_writer(format, "run", description);
    writer->write_probe(0, test::made_packets(1, begin, end, is_lost));
    writer->finish();
    return writer;
}

bool none(std::uint64_t /*sample*/) {
    return false;
}

TEST(Packet_Writer, PutsEverySampleAtItsNumber) {
    const auto writer = record_probe(Format::spikeglx, one_probe(), 0, 1'200, none);
    const Sample_Table ap(ap_file, 385);
    ASSERT_EQ(ap.rows(), 1'200U);
    for (std::size_t row = 0; row < ap.rows(); ++row) {
        for (std::size_t channel = 0; channel < 384; ++channel) {
            ASSERT_EQ(ap.at(row, channel), test::ap_value(1, static_cast<int>(channel), row));
        }
        ASSERT_EQ(ap.at(row, 384), test::sync_level(row) ? 64 : 0);
    }
    const Sample_Table lfp(lfp_file, 385);
    ASSERT_EQ(lfp.rows(), 100U);
    for (std::size_t row = 0; row < lfp.rows(); ++row) {
        ASSERT_EQ(lfp.at(row, 100), test::lfp_value(1, 100, row));
        ASSERT_EQ(lfp.at(row, 384), test::sync_level(12 * row) ? 64 : 0);
    }
    EXPECT_EQ(writer->samples(0), 1'200U);
    EXPECT_EQ(writer->lost_samples(0), 0U);
    EXPECT_EQ(read_file("run/gaps.csv"), gap_table_head);
    EXPECT_EQ(writer->bytes_written(), (1'200U + 100U) * 385 * 2 + read_file("run/gaps.csv").size());
}

TEST(Packet_Writer, LeavesTheBeginningOfTheFirstPacketFreeWithoutCallingItLost) {
    for (const Format format : {Format::spikeglx, Format::open_ephys}) {
        std::filesystem::remove_all("run");
        const auto writer = record_probe(format, one_probe(), 7, 7 + 240, none);
        EXPECT_EQ(writer->lost_samples(0), 0U);
        EXPECT_EQ(writer->samples(0), 247U);
        EXPECT_EQ(read_file("run/gaps.csv"), gap_table_head);
        const Sample_Table ap =
            format == Format::spikeglx
                ? Sample_Table(ap_file, 385)
                : Sample_Table(std::string(oe_folder) + "continuous/ORBE-100.ProbeA-AP/continuous.dat", 384);
        ASSERT_EQ(ap.rows(), 247U);
        EXPECT_EQ(ap.at(6, 0), 0);
        EXPECT_EQ(ap.at(7, 0), test::ap_value(1, 0, 7));
        EXPECT_EQ(ap.at(246, 383), test::ap_value(1, 383, 246));
    }
}

TEST(Packet_Writer, RefusesAFolderWithARecording) {
    record_probe(Format::spikeglx, one_probe(), 0, 12, none);
    try {
        make_writer(Format::open_ephys, "run", one_probe());
        FAIL();
    } catch (const std::system_error& error) {
        EXPECT_EQ(error.code(), std::errc::file_exists);
    }
}

TEST(Packet_Writer, FillsGapsWithZerosAndTellsOfThem) {
    const auto is_lost = [](std::uint64_t sample) { return sample >= 701 && sample < 701 + 40; };
    const auto writer = record_probe(Format::spikeglx, one_probe(), 0, 1'228, is_lost);
    const Sample_Table ap(ap_file, 385);
    ASSERT_EQ(ap.rows(), 1'228U);
    for (std::size_t row = 0; row < ap.rows(); ++row) {
        ASSERT_EQ(ap.at(row, 17), is_lost(row) ? 0 : test::ap_value(1, 17, row)) << row;
    }
    // The level before the gap is low at 701.
    EXPECT_EQ(ap.at(710, 384), 0);
    EXPECT_EQ(writer->lost_samples(0), 40U);
    // The packet in which the gap begins is the 58th; packets behind it begin 4 samples later than before.
    EXPECT_EQ(read_file("run/gaps.csv"), "stream,sample,length\nimec0.ap,701,40\nimec0.lf,59,3\n");
    const Sample_Table lfp(lfp_file, 385);
    EXPECT_EQ(lfp.at(58, 5), test::lfp_value(1, 5, 58));
    EXPECT_EQ(lfp.at(59, 5), 0);
    EXPECT_EQ(lfp.at(61, 5), 0);
    EXPECT_EQ(lfp.at(62, 5), test::lfp_value(1, 5, (701 + 40 + 7) / 12));
}

TEST(Packet_Writer, HasTheGapsInTheOrderOfStreamsWhicheverThreadCameFirst) {
    Recording_Description description;
    description.probes = {default_probe(1), default_probe(2)};
    auto writer = make_writer(Format::spikeglx, "run", description);
    const auto is_lost = [](std::uint64_t sample) { return sample == 24 || sample == 60; };
    writer->write_probe(1, test::made_packets(2, 0, 50, is_lost));
    writer->write_probe(0, test::made_packets(1, 0, 98, is_lost));
    writer->finish();
    EXPECT_EQ(read_file("run/gaps.csv"),
              "stream,sample,length\nimec0.ap,24,1\nimec0.ap,60,1\nimec1.ap,24,1\n");
}

TEST(Packet_Writer, HoldsTheSyncLevelOverAShortGap) {
    const auto is_lost = [](std::uint64_t sample) { return sample >= 600 && sample < 720; };
    record_probe(Format::spikeglx, one_probe(), 0, 1'320, is_lost);
    const Sample_Table ap(ap_file, 385);
    EXPECT_EQ(ap.at(600, 384), 64);
    EXPECT_EQ(ap.at(719, 384), 64);
    EXPECT_EQ(ap.at(719, 0), 0);
    EXPECT_EQ(ap.at(720, 384), 0);
}

TEST(Packet_Writer, KeepsTheSamplesOfAPacketApartThatAGapGoesThrough) {
    auto writer = make_writer(Format::spikeglx, "run", one_probe());
    const std::vector<std::uint64_t> samples{0, 1, 2, 5, 6, 7, 8, 1000, 1001, 1002, 1003, 1004};
    const auto packet = test::made_packet(1, samples);
    writer->write_probe(0, {&packet, 1});
    writer->finish();
    const Sample_Table ap(ap_file, 385);
    ASSERT_EQ(ap.rows(), 1'005U);
    EXPECT_EQ(ap.at(2, 9), test::ap_value(1, 9, 2));
    EXPECT_EQ(ap.at(3, 9), 0);
    EXPECT_EQ(ap.at(5, 9), test::ap_value(1, 9, 5));
    EXPECT_EQ(ap.at(999, 9), 0);
    EXPECT_EQ(ap.at(1'000, 9), test::ap_value(1, 9, 1'000));
    EXPECT_EQ(writer->lost_samples(0), 993U);
    EXPECT_EQ(read_file("run/gaps.csv"), "stream,sample,length\nimec0.ap,3,2\nimec0.ap,9,991\n");
}

TEST(Packet_Writer, SkipsAGapThatIsLongerThanWhatTheSyncInputIsHeldFor) {
    auto writer = make_writer(Format::spikeglx, "run", one_probe());
    constexpr std::uint64_t gap = std::uint64_t{30'000} * 2;
    const auto before = test::made_packets(1, 0, 12, none);
    const auto behind = test::made_packets(1, 12 + gap, 24 + gap, none);
    writer->write_probe(0, before);
    writer->write_probe(0, behind);
    writer->finish();
    EXPECT_EQ(writer->lost_samples(0), gap);
    EXPECT_EQ(std::filesystem::file_size(ap_file), (gap + 24) * 385 * 2);
    const Sample_Table ap(ap_file, 385);
    // The sync input was high, and is taken to be so for a second.
    EXPECT_EQ(ap.at(12, 384), 64);
    EXPECT_EQ(ap.at(12 + 29'999, 384), 64);
    EXPECT_EQ(ap.at(12 + 30'000, 384), 0);
    EXPECT_EQ(ap.at(12 + gap, 11), test::ap_value(1, 11, 12 + gap));
}

TEST(Packet_Writer, WritesOnlyTheTimeThatIsWanted) {
    for (const Format format : {Format::spikeglx, Format::open_ephys}) {
        std::filesystem::remove_all("run");
        Recording_Description description = one_probe();
        description.first_sample = 120;
        description.end_sample = 240;
        const auto writer = record_probe(format, description, 5, 5 + 600, none);
        EXPECT_EQ(writer->samples(0), 120U);
        EXPECT_EQ(writer->lost_samples(0), 0U);
        const bool is_spikeglx = format == Format::spikeglx;
        const std::string continuous = std::string(oe_folder) + "continuous/ORBE-100.ProbeA-";
        const Sample_Table ap =
            is_spikeglx ? Sample_Table(ap_file, 385) : Sample_Table(continuous + "AP/continuous.dat", 384);
        ASSERT_EQ(ap.rows(), 120U);
        EXPECT_EQ(ap.at(0, 3), test::ap_value(1, 3, 120));
        EXPECT_EQ(ap.at(119, 3), test::ap_value(1, 3, 239));
        const Sample_Table lfp =
            is_spikeglx ? Sample_Table(lfp_file, 385) : Sample_Table(continuous + "LFP/continuous.dat", 384);
        ASSERT_EQ(lfp.rows(), 10U);
        EXPECT_EQ(lfp.at(0, 3), test::lfp_value(1, 3, 10));
        if (!is_spikeglx) {
            EXPECT_EQ(test::read_numbers<std::int64_t>(continuous + "AP/sample_numbers.npy", 128).front(),
                      120);
            EXPECT_EQ(test::read_numbers<std::int64_t>(continuous + "LFP/sample_numbers.npy", 128).front(),
                      10);
            EXPECT_EQ(test::read_numbers<double>(continuous + "LFP/timestamps.npy", 128).back(), 19 / 2500.0);
        }
    }
}

TEST(Packet_Writer, PicksTheChannelsThatAreWanted) {
    Recording_Description description = one_probe();
    description.saved_channels = {1, 2, 383};
    record_probe(Format::spikeglx, description, 0, 12, none);
    const Sample_Table ap(ap_file, 4);
    ASSERT_EQ(ap.rows(), 12U);
    EXPECT_EQ(ap.at(11, 0), test::ap_value(1, 1, 11));
    EXPECT_EQ(ap.at(11, 2), test::ap_value(1, 383, 11));
    EXPECT_EQ(ap.at(11, 3), 64);
}

TEST(Packet_Writer, WritesTheADCInputsWithTheirComparatorsInOneWord) {
    Recording_Description description;
    description.adc = ADC_Description{};
    auto writer = make_writer(Format::spikeglx, "run", description);
    test::Made_ADC_Packets packets;
    for (const std::uint64_t sample : {0U, 1U, 2U, 600U, 601U}) {
        test::add_adc_packet(packets, sample);
    }
    writer->write_adc(packets.infos, packets.rows);
    writer->finish();
    const Sample_Table adc(adc_file, 14);
    ASSERT_EQ(adc.rows(), 602U);
    EXPECT_EQ(adc.at(601, 11), test::adc_value(11, 601));
    EXPECT_EQ(adc.at(300, 11), 0);
    // 601 / 500 is 1, so that inputs 2, 5, 8 and 11 are high.
    EXPECT_EQ(adc.at(601, 12), 1 << 2 | 1 << 5 | 1 << 8 | 1 << 11);
    EXPECT_EQ(adc.at(601, 13), 64);
    EXPECT_EQ(writer->stream_name(0), "obx0");
    EXPECT_EQ(writer->lost_samples(0), 597U);
}

#if !defined(_WIN32)

TEST(Packet_Writer, FinishesTheOtherStreamsWhenTheDiskDoesNotTakeOne) {
    auto writer = make_writer(Format::spikeglx, "run", test::made_description());
    std::filesystem::create_symlink("/dev/full", ap_file);
    const auto packets = test::made_packets(1, 0, 120, none);
    writer->write_probe(0, packets);
    writer->write_probe(1, packets);
    try {
        writer->finish();
        FAIL();
    } catch (const std::system_error& error) {
        EXPECT_EQ(error.code(), std::errc::no_space_on_device);
        EXPECT_NE(std::string(error.what()).find("imec0.ap.bin"), std::string::npos);
    }
    EXPECT_EQ(Sample_Table(lfp_file, 385).rows(), 10U);
    const std::string second = "run/run_g0/run_g0_imec1/run_g0_t0.imec1.ap.";
    EXPECT_EQ(Sample_Table(second + "bin", 385).rows(), 120U);
    EXPECT_NE(read_file(second + "meta").find("fileSizeBytes=92400\n"), std::string::npos);
}

#endif

TEST(Packet_Writer, HasOnTheDiskWhatIsAQuarterOfASecondOld) {
    for (const Format format : {Format::spikeglx, Format::open_ephys}) {
        std::filesystem::remove_all("run");
        auto writer = make_writer(format, "run", one_probe());
        writer->write_probe(0, test::made_packets(1, 0, 7'512, none));
        const std::string path =
            format == Format::spikeglx
                ? ap_file
                : std::string(oe_folder) + "continuous/ORBE-100.ProbeA-AP/continuous.dat";
        EXPECT_GE(std::filesystem::file_size(path), 768U * 5'000) << path;
    }
}

} // namespace
