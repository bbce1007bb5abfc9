#include "folders/Foreign_SpikeGLX.h"

#include "folders/SpikeGLX_Metadata.h"
#include "probe_geometry/Probe_Geometry.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <map>
#include <set>
#include <stdexcept>
#include <utility>

namespace Pelgar::ORBE::view {

namespace {

using Kind = Folder_Stream::Kind;

constexpr std::size_t most_probes = 4;
// The clocks of headstages differ by less.
constexpr double rate_tolerance = 1e-3;
constexpr double range_volts = 0.6;
constexpr double largest_value = 512;
constexpr int largest_gain = 3000;
constexpr int largest_reference = 4;

// A run has its probes in folders of their own, in a folder of its own.
constexpr int deepest_folder = 4;
// A thousand times what is usual.
constexpr std::uintmax_t longest_metadata = std::uintmax_t{64} << 20U;

struct Metadata_Files {
    std::map<std::string, std::filesystem::path> ap; // by "imec0"
    std::map<std::string, std::filesystem::path> lfp;
};

void add_metadata(const std::filesystem::path& folder, const std::filesystem::directory_entry& entry,
                  const std::string& band, std::map<std::string, std::filesystem::path>& found) {
    const std::string name = entry.path().filename().string();
    const std::string ending = "." + band + ".meta";
    const std::size_t begin = name.rfind(".imec");
    if (!name.ends_with(ending) || begin == std::string::npos || begin + ending.size() > name.size() ||
        !entry.is_regular_file()) {
        return;
    }
    if (entry.file_size() > longest_metadata) {
        throw std::runtime_error("'" + entry.path().string() + "' is too long for metadata of SpikeGLX");
    }
    const std::string probe = name.substr(begin + 1, name.size() - ending.size() - begin - 1);
    const auto [other, is_new] = found.emplace(probe, entry.path());
    if (!is_new) {
        throw std::runtime_error("'" + folder.string() + "' holds several recordings, '" +
                                 other->second.filename().string() + "' and '" + name +
                                 "': show a folder with one");
    }
}

// Files whose names end as "….imec0.ap.meta", in the folder and in those below it. What is linked into it is
// left out, so that there is an end to it.
Metadata_Files find_metadata(const std::filesystem::path& folder, std::size_t most_files) {
    Metadata_Files found;
    std::size_t count = 0;
    using Iterator = std::filesystem::recursive_directory_iterator;
    for (Iterator entry(folder, std::filesystem::directory_options::skip_permission_denied);
         entry != Iterator(); ++entry) {
        if (++count > most_files) {
            throw std::runtime_error("'" + folder.string() + "' holds more than " +
                                     std::to_string(most_files) +
                                     " files: show the folder of one run of SpikeGLX");
        }
        if (entry.depth() >= deepest_folder) {
            entry.disable_recursion_pending();
        }
        add_metadata(folder, *entry, "ap", found.ap);
        add_metadata(folder, *entry, "lf", found.lfp);
    }
    return found;
}

void check_kind(const SpikeGLX_Metadata& metadata) {
    if (metadata.number("imAiRangeMax").value_or(range_volts) != range_volts ||
        metadata.number("imMaxInt").value_or(largest_value) != largest_value) {
        metadata.refuse("is of a probe of another kind than orbe-view shows");
    }
}

void read_channels(const SpikeGLX_Metadata& metadata, recorder::Probe_Description& probe) {
    const auto table = metadata.table("~imroTbl");
    if (table.size() != recorder::channel_count + 1) {
        metadata.refuse("is of a probe of another kind than orbe-view shows");
    }
    std::set<double> seen;
    for (std::size_t place = 1; place < table.size(); ++place) {
        const std::vector<double>& row = table[place]; // channel, bank, reference, AP gain, LFP gain, filter
        const bool is_whole =
            (row.size() == 5 || row.size() == 6) &&
            std::all_of(row.begin(), row.end(), [](double number) { return std::trunc(number) == number; });
        const double electrode = is_whole ? row[0] + row[1] * recorder::channel_count : -1;
        if (!is_whole || row[0] < 0 || row[0] >= recorder::channel_count || !seen.insert(row[0]).second ||
            electrode >= recorder::electrode_count || electrode < row[0] || row[2] < 0 ||
            row[2] > largest_reference || row[3] < 1 || row[4] < 1 || row[3] > largest_gain ||
            row[4] > largest_gain) {
            metadata.refuse("is of a probe of another kind than orbe-view shows");
        }
        recorder::Channel_Description& channel = probe.channels[static_cast<std::size_t>(row[0])];
        channel.electrode = static_cast<int>(electrode);
        channel.reference = static_cast<int>(row[2]);
        channel.ap_gain = static_cast<int>(row[3]);
        channel.lfp_gain = static_cast<int>(row[4]);
    }
}

recorder::Probe_Description probe_of(const SpikeGLX_Metadata& metadata) {
    check_kind(metadata);
    recorder::Probe_Description probe;
    const std::uint64_t port = metadata.whole_number("imDatPrb_port").value_or(0);
    probe.port = port <= most_probes ? static_cast<int>(port) : 0;
    probe.serial_number = metadata.whole_number("imDatPrb_sn").value_or(0);
    probe.part_number = metadata.text("imDatPrb_pn").value_or("");
    read_channels(metadata, probe);
    return probe;
}

Folder_Stream stream_of(const SpikeGLX_Metadata& metadata, Kind kind, std::size_t probe) {
    Folder_Stream stream;
    stream.kind = kind;
    stream.probe = probe;
    stream.data = std::filesystem::path(metadata.path()).replace_extension(".bin");
    const double rate = kind == Kind::ap ? recorder::ap_sample_rate : recorder::lfp_sample_rate;
    if (std::abs(metadata.number("imSampRate").value_or(0) / rate - 1) > rate_tolerance) {
        metadata.refuse("has another sample rate than orbe-view shows");
    }
    constexpr auto count = static_cast<int>(recorder::channel_count);
    const int first = kind == Kind::ap ? 0 : count;
    for (const int number : metadata.numbers("snsSaveChanSubset")) {
        if (!stream.channels.empty() && number - first <= stream.channels.back()) {
            metadata.refuse("has its channels in another order than that of their numbers");
        }
        if (number >= first && number < first + count) {
            stream.channels.push_back(number - first);
        } else if (number < 2 * count) {
            metadata.refuse("has channels of both bands");
        } else {
            ++stream.row_length; // the status
        }
    }
    stream.row_length += stream.channels.size();
    if (metadata.number("nSavedChans") != static_cast<double>(stream.row_length) || stream.channels.empty()) {
        metadata.refuse("is damaged: nSavedChans is not the number of the channels in snsSaveChanSubset");
    }
    return stream;
}

// The ports of one basestation; where probes are on several, their places.
void number_ports(std::vector<recorder::Probe_Description>& probes) {
    std::set<int> ports;
    for (const recorder::Probe_Description& probe : probes) {
        if (probe.port >= 1 && probe.port <= static_cast<int>(most_probes)) {
            ports.insert(probe.port);
        }
    }
    if (ports.size() != probes.size()) {
        int port = 1;
        for (recorder::Probe_Description& probe : probes) {
            probe.port = port++;
        }
    }
}

} // namespace

Folder_Layout foreign_spikeglx_layout(const std::filesystem::path& folder, std::size_t most_files) {
    const auto [ap, lfp] = find_metadata(folder, most_files);
    if (ap.empty() || ap.size() > most_probes) {
        throw std::runtime_error("'" + folder.string() + "' " +
                                 (ap.empty()
                                      ? "is no recording that orbe-view knows: it has neither " +
                                            std::string(recorder::description_file_name) +
                                            " nor, in it and in the " + std::to_string(deepest_folder) +
                                            " levels of folders below it, the files of a probe that "
                                            "SpikeGLX writes"
                                      : "has more probes than orbe-view shows"));
    }
    Folder_Layout layout;
    layout.folder = folder;
    layout.has_gap_table = false;
    for (const auto& [name, path] : ap) {
        const std::size_t place = layout.description.probes.size();
        const SpikeGLX_Metadata metadata(path);
        layout.description.probes.push_back(probe_of(metadata));
        layout.streams.push_back(stream_of(metadata, Kind::ap, place));
        if (const auto other = lfp.find(name); other != lfp.end()) {
            layout.streams.push_back(stream_of(SpikeGLX_Metadata(other->second), Kind::lfp, place));
        }
    }
    number_ports(layout.description.probes);
    layout.description.saved_channels = layout.streams.front().channels;
    for (const Folder_Stream& stream : layout.streams) {
        if (stream.channels != layout.description.saved_channels) {
            throw std::runtime_error("'" + stream.data.string() + "' holds other channels than '" +
                                     layout.streams.front().data.string() + "'");
        }
    }
    return layout;
}

} // namespace Pelgar::ORBE::view
