#include "folders/Folder_Layout.h"

#include "description/Whole_File.h"
#include "folders/SpikeGLX_Metadata.h"
#include "formats/Make_Writer.h"
#include "formats/Open_Ephys_Files.h"
#include "formats/SpikeGLX_Files.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <set>
#include <sstream>
#include <stdexcept>

namespace Pelgar::ORBE::view {

namespace {

using Kind = Folder_Stream::Kind;

// Both formats name their kinds alike.
template <typename Format_Kind>
Kind kind_of(Format_Kind kind) {
    return kind == Format_Kind::ap ? Kind::ap : kind == Format_Kind::lfp ? Kind::lfp : Kind::adc;
}

template <typename Format_Stream>
Folder_Stream stream_of(const Format_Stream& stream, const recorder::Recording_Description& description) {
    Folder_Stream result;
    result.kind = kind_of(stream.kind);
    if (result.kind == Kind::adc) {
        result.input_count = static_cast<std::size_t>(description.adc.value().input_count);
    } else {
        result.probe = stream.probe;
        result.channels = recorder::saved_channels(description);
    }
    return result;
}

[[noreturn]] void refuse(const std::filesystem::path& file, const std::string& what) {
    throw std::runtime_error("'" + file.string() + "' does not belong to this folder: " + what);
}

void check(const std::filesystem::path& file, const std::string& key, double value, double expected) {
    if (value != expected) {
        std::ostringstream text;
        text << "it has " << key << " " << value << ", and the description of the folder " << expected;
        refuse(file, text.str());
    }
}

// What the metadata say of the columns and the rate, where they say it. Whether they are there makes no
// difference: orbe-record repair writes them anew from the description.
void check_metadata(const recorder::SpikeGLX_Stream& stream) {
    if (!std::filesystem::exists(stream.meta_path)) {
        return;
    }
    const SpikeGLX_Metadata metadata(stream.meta_path);
    const auto check_key = [&](const char* key, double expected) {
        if (const auto value = metadata.number(key)) {
            check(stream.meta_path, key, *value, expected);
        }
    };
    check_key("nSavedChans", static_cast<double>(stream.column_count));
    check_key("imSampRate", stream.sample_rate);
    check_key("obSampRate", stream.sample_rate);
}

std::vector<Folder_Stream> streams_of_spikeglx(const std::filesystem::path& folder,
                                               const recorder::Recording_Description& description) {
    std::vector<Folder_Stream> streams;
    for (const recorder::SpikeGLX_Stream& each : recorder::spikeglx_streams(folder, description)) {
        check_metadata(each);
        Folder_Stream& stream = streams.emplace_back(stream_of(each, description));
        stream.name = each.name;
        stream.data = each.data_path;
        stream.row_length = each.column_count;
    }
    return streams;
}

// A stream stands in structure.oebin from its first sample on.
void check_structure(const std::filesystem::path& path,
                     const std::vector<recorder::Open_Ephys_Stream>& streams) {
    if (!std::filesystem::exists(path)) {
        return;
    }
    try {
        const auto structure = nlohmann::json::parse(recorder::read_file(path));
        for (const auto& entry : structure.at("continuous")) {
            const auto stream =
                std::find_if(streams.begin(), streams.end(), [&](const recorder::Open_Ephys_Stream& each) {
                    return each.name == entry.at("stream_name").get<std::string>();
                });
            if (stream == streams.end()) {
                refuse(path, "the description of the folder has no " + entry.at("stream_name").dump());
            }
            check(path, "num_channels of " + stream->name, entry.at("num_channels").get<double>(),
                  static_cast<double>(stream->channel_count));
            check(path, "sample_rate of " + stream->name, entry.at("sample_rate").get<double>(),
                  stream->sample_rate);
        }
    } catch (const nlohmann::json::exception& error) {
        throw std::runtime_error("'" + path.string() + "' is damaged: " + error.what() +
                                 "; orbe-record repair mends the folder");
    }
}

std::vector<Folder_Stream> streams_of_open_ephys(const std::filesystem::path& folder,
                                                 const recorder::Recording_Description& description) {
    const auto all = recorder::open_ephys_streams(folder, description);
    check_structure(recorder::open_ephys_structure_path(folder), all);
    std::vector<Folder_Stream> streams;
    for (const recorder::Open_Ephys_Stream& each : all) {
        Folder_Stream& stream = streams.emplace_back(stream_of(each, description));
        stream.name = each.folder_name;
        stream.data = each.continuous_folder / "continuous.dat";
        stream.row_length = each.channel_count;
        if (stream.kind == Kind::adc) {
            stream.lines = each.events_folder;
        }
        stream.first_sample = each.first_sample;
    }
    return streams;
}

} // namespace

Folder_Layout layout_of(const std::filesystem::path& folder, const recorder::Described_Folder& described) {
    const auto format = recorder::format_of(described.format);
    if (!format) {
        throw std::runtime_error("'" + folder.string() + "' has the format '" + described.format +
                                 "', which is not known here");
    }
    Folder_Layout layout;
    layout.folder = folder;
    layout.description = described.description;
    std::set<int> ports;
    for (const recorder::Probe_Description& probe : layout.description.probes) {
        if (!ports.insert(probe.port).second) {
            throw std::runtime_error("the description of '" + folder.string() + "' has port " +
                                     std::to_string(probe.port) + " twice");
        }
    }
    layout.streams = *format == recorder::Format::spikeglx
                         ? streams_of_spikeglx(folder, layout.description)
                         : streams_of_open_ephys(folder, layout.description);
    if (layout.streams.empty()) {
        throw std::runtime_error("the description of '" + folder.string() + "' has no stream");
    }
    return layout;
}

} // namespace Pelgar::ORBE::view
