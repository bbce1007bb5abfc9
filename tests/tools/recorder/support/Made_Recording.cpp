#include "Made_Recording.h"

#include <algorithm>
#include <array>
#include <span>

namespace Pelgar::ORBE::test {

namespace {

using namespace recorder;

constexpr std::array<int, 8> gains{50, 125, 250, 500, 1000, 1500, 2000, 3000};
constexpr std::size_t packets_at_once = 37;

} // namespace

Recording_Description made_description() {
    Recording_Description description;
    description.start_time = std::chrono::sys_days(std::chrono::year(2024) / 5 / 31) + std::chrono::hours(12);
    description.source = "box";
    description.program_version = "1.2.3";
    for (const int port : {1, 3}) {
        Probe_Description probe = default_probe(port);
        probe.serial_number = 18005116102 + static_cast<std::uint64_t>(port);
        probe.part_number = "PRB_1_4_0480_1";
        probe.headstage_part_number = "NP2_HS_30";
        probe.is_calibrated = true;
        for (std::size_t channel = 0; channel < channel_count; ++channel) {
            const std::size_t turn = channel + static_cast<std::size_t>(port);
            probe.channels[channel].ap_gain = gains[turn % gains.size()];
            probe.channels[channel].lfp_gain = gains[turn / 8 % gains.size()];
        }
        probe.channels[7].electrode = 7 + 384;
        description.probes.push_back(probe);
    }
    description.adc = ADC_Description{10.0, 12};
    return description;
}

void write_made_packets(A_Recording_Writer& writer, const Recording_Description& description) {
    for (std::size_t probe = 0; probe < description.probes.size(); ++probe) {
        const bool is_second = probe == 1;
        const auto packets =
            made_packets(description.probes[probe].port, is_second ? second_probe_begins : 0, made_samples,
                         [&](std::uint64_t sample) { return is_second && lost_of_second_probe.has(sample); });
        for (std::size_t at = 0; at < packets.size(); at += packets_at_once) {
            writer.write_probe(
                probe, std::span(packets).subspan(at, std::min(packets_at_once, packets.size() - at)));
        }
    }
    if (!description.adc) {
        return;
    }
    Made_ADC_Packets packets;
    for (std::uint64_t sample = 0; sample < made_samples; ++sample) {
        if (!lost_of_adc.has(sample)) {
            add_adc_packet(packets, sample);
        }
    }
    writer.write_adc(packets.infos, packets.rows);
}

void make_recording(Format format, const std::filesystem::path& folder,
                    const Recording_Description& description) {
    const auto writer = make_writer(format, folder, description);
    write_made_packets(*writer, description);
    writer->finish();
}

} // namespace Pelgar::ORBE::test
