#include "Play_Report.h"

#include "checker/Damage_List.h"
#include "stream_format/Wire_Format.h"
#include "terminal/Text_Format.h"
#include "terminal/Text_Table.h"

#include <string>
#include <vector>

namespace Pelgar::ORBE::recording {

namespace {

// What four probes and sixteen RHD streams deliver.
constexpr double full_box_megabytes = 164.6;

std::string seconds_of(std::uint64_t frames) {
    return tools::text_of("%.3f", static_cast<double>(frames) / super_frames_per_second);
}

std::string equal_of(const Reader_Result& result, bool verify) {
    return verify ? std::to_string(result.equal) : "-";
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
        const std::uint64_t missing = result.expected - result.received;
        text += name + ": " + tools::counted(missing, "packet is", "packets are") + " missing\n";
    }
    if (result.surplus) {
        text += name + " delivers more packets than the recording holds\n";
    }
    return text;
}

// Why a stream that is in the recording delivers nothing.
std::string remark_on_silence(const std::string& name, const Row_Findings& found, std::uint64_t packets,
                              const char* reason) {
    return found.rows == 0 || packets != 0 ? ""
                                           : name + ": " + tools::counted(found.rows, "row", "rows") +
                                                 ", but no packet: " + reason + "\n";
}

std::string remarks_on_recording(const Check_Report& recording, std::size_t width) {
    std::string text;
    for (std::size_t port = 0; port < port_count; ++port) {
        const Port_Findings& found = recording.ports[port];
        text += remark_on_silence("port " + std::to_string(port + 1), found, found.packets,
                                  "they make no whole block of 1,792 super frames that one more row follows");
    }
    text += remark_on_silence("RHD ADC", recording.rhd, recording.rhd.packets,
                              "they hold no frame of no data streams");
    text = tools::wrapped(text, width, 2);
    const std::vector<Damage> damage = damage_of(recording);
    if (!damage.empty()) {
        text += "The recording itself is damaged:\n" + lines_of(recording, damage, width);
    }
    return text;
}

} // namespace

std::string report(const Player& player, const Play_Options& options, std::size_t width) {
    tools::Text_Table table(
        {"Stream", "expected", "received", "equal", "AP samples", "LFP samples", "seconds"});
    std::string notes;
    int port = 0;
    for (const Reader_Result* const found : player.ports()) {
        const Reader_Result& result = *found;
        const std::string name = "port " + std::to_string(++port);
        const std::uint64_t received = result.received;
        const std::uint64_t ap_samples = received * slots_per_sample;
        table.add({name, std::to_string(result.expected), std::to_string(received),
                   equal_of(result, options.verify), std::to_string(ap_samples), std::to_string(received),
                   seconds_of(ap_samples)});
        notes += remarks(name, result);
    }
    const Reader_Result& adc = player.adc();
    const std::uint64_t received = adc.received;
    table.add({"RHD ADC", std::to_string(adc.expected), std::to_string(received),
               equal_of(adc, options.verify), "-", "-", seconds_of(received)});
    notes += remarks("RHD ADC", adc);
    notes = tools::wrapped(notes, width, 2) + remarks_on_recording(player.recording(), width);

    std::string text = table.text(width);
    if (!player.problem().empty()) {
        return text + notes;
    }
    const double megabytes = static_cast<double>(player.bytes()) / 1e6;
    const double rate = megabytes / player.seconds();
    text += tools::wrapped(
        tools::text_of("%.1f MB played in %.2f s: %.1f MB/s, %.2f times the full box (%.1f MB/s)\n",
                       megabytes, player.seconds(), rate, rate / full_box_megabytes, full_box_megabytes),
        width, 2);
    return text + notes;
}

} // namespace Pelgar::ORBE::recording
