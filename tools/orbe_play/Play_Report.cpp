#include "Play_Report.h"

#include "Text_Format.h"
#include "Wire_Format.h"

#include <cstdio>

namespace Pelgar::ORBE::recording {

namespace {

// What four probes and sixteen RHD streams deliver.
constexpr double full_box_megabytes = 164.6;

// The first columns are the same for ports and ADC packets.
std::string line(const std::string& name, const Reader_Result& result, bool verify) {
    const std::string equal = verify ? std::to_string(result.equal) : "-";
    return text_of("%-8s %10llu %10llu %10s", name.c_str(), wide(result.expected),
                   wide(result.received.load()), equal.c_str());
}

std::string remarks(const std::string& name, const Reader_Result& result) {
    std::string text;
    if (!result.error.empty()) {
        text += name + ": " + result.error + "\n";
    }
    if (!result.first_difference.empty()) {
        text += name + " differs first in " + result.first_difference + "\n";
    }
    if (result.received < result.expected) {
        text += name + ": " + std::to_string(result.expected - result.received) + " packets are missing\n";
    }
    if (result.surplus) {
        text += name + " delivers more packets than the recording holds\n";
    }
    return text;
}

} // namespace

std::string report(const Player& player, const Play_Options& options) {
    std::string text = "Stream     expected   received      equal  AP samples  LFP samples     seconds\n";
    std::string notes;
    int port = 0;
    for (const Reader_Result* const found : player.ports()) {
        const Reader_Result& result = *found;
        const std::string name = "port " + std::to_string(++port);
        const std::uint64_t ap_samples = result.received * slots_per_sample;
        text += line(name, result, options.verify);
        text += text_of(" %11llu %12llu %11.3f\n", wide(ap_samples), wide(result.received.load()),
                        static_cast<double>(ap_samples) / super_frames_per_second);
        notes += remarks(name, result);
    }
    const Reader_Result& adc = player.adc();
    text += line("RHD ADC", adc, options.verify);
    text +=
        text_of(" %11s %12s %11.3f\n", "-", "-", static_cast<double>(adc.received) / super_frames_per_second);
    notes += remarks("RHD ADC", adc);

    if (!player.problem().empty()) {
        return text + notes;
    }
    const double rate = static_cast<double>(player.bytes()) / 1e6 / player.seconds();
    text += text_of("%.1f MB played in %.2f s: %.1f MB/s, %.2f times the full box (%.1f MB/s)\n",
                    static_cast<double>(player.bytes()) / 1e6, player.seconds(), rate,
                    rate / full_box_megabytes, full_box_megabytes);
    return text + notes;
}

} // namespace Pelgar::ORBE::recording
