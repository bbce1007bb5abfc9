#include "formats/Open_Ephys_Files.h"

#include "probe_geometry/Probe_Geometry.h"

#include <nlohmann/json.hpp>

namespace Pelgar::ORBE::recorder {

namespace {

using Json = nlohmann::ordered_json;
using Kind = Open_Ephys_Stream::Kind;

constexpr const char* processor_name = "ORBE";
constexpr int processor_id = 100;
constexpr const char* node_folder = "Record Node 101";
constexpr const char* interface_version = "0.6.7";

// A microvolt at the electrode is so much at the converter, whose range of 1.2 V has 1024 steps.
constexpr double converter_step_uv = 1.2e6 / 1024.0;
constexpr double adc_full_scale = 32768.0;

std::string processor_folder(const std::string& stream_name) {
    return std::string(processor_name) + "-" + std::to_string(processor_id) + "." + stream_name;
}

Json metadata(const char* name, const char* description, const char* identifier, const char* type,
              const Json& value) {
    return {{"name", name}, {"description", description},   {"identifier", identifier}, {"type", type},
            {"length", 1},  {"value", Json::array({value})}};
}

Json probe_channel(const Open_Ephys_Stream& stream, const Probe_Description& probe, int channel) {
    const auto index = static_cast<std::size_t>(channel);
    const Channel_Description& settings = probe.channels[index];
    const Electrode_Position position =
        position_of(geometry_of(probe.part_number), electrode_or_bank_0(probe, index));
    const bool is_ap = stream.kind == Kind::ap;
    const int gain = is_ap ? settings.ap_gain : settings.lfp_gain;
    return {
        {"channel_name", (is_ap ? "AP" : "LFP") + std::to_string(channel + 1)},
        {"description", is_ap ? "AP band" : "LFP band"},
        {"identifier", is_ap ? "neuropixels.data.ap" : "neuropixels.data.lfp"},
        {"history", processor_name},
        {"bit_volts", converter_step_uv / gain},
        {"units", "uV"},
        {"channel_metadata",
         {metadata("Electrode", "The electrode, or -1", "neuropixels.electrode_index", "int32",
                   settings.electrode),
          metadata("x", "um from the left edge of the shank", "neuropixels.x_position", "double", position.x),
          metadata("y", "um from the row nearest to the tip", "neuropixels.y_position", "double", position.y),
          metadata("Gain", "Of the amplifiers", "neuropixels.gain", "int32", gain),
          metadata("Reference", "0 external, 1 tip, 2 to 4 internal", "neuropixels.reference", "int32",
                   settings.reference)}},
    };
}

Json adc_channel(const ADC_Description& adc, int input) {
    return {
        {"channel_name", "ADC" + std::to_string(input)},
        {"description", "Analog input"},
        {"identifier", "orbe.data.adc"},
        {"history", processor_name},
        {"bit_volts", adc.range_volts / adc_full_scale},
        {"units", "V"},
    };
}

Json continuous_entry(const Open_Ephys_Stream& stream, const Recording_Description& description) {
    Json entry{
        {"folder_name", stream.folder_name + "/"},
        {"sample_rate", stream.sample_rate},
        {"source_processor_name", processor_name},
        {"source_processor_id", processor_id},
        {"stream_name", stream.name},
        {"recorded_processor", "Record Node"},
        {"recorded_processor_id", processor_id + 1},
        {"num_channels", stream.channel_count},
        {"channels", Json::array()},
    };
    if (stream.kind == Kind::adc) {
        for (int input = 0; input < description.adc.value().input_count; ++input) {
            entry["channels"].push_back(adc_channel(*description.adc, input));
        }
        return entry;
    }
    const Probe_Description& probe = description.probes.at(stream.probe);
    entry["stream_metadata"] = {metadata("Port", "Of the box", "orbe.port", "int32", probe.port),
                                metadata("Serial number", "Of the probe", "neuropixels.probe_serial_number",
                                         "uint64", probe.serial_number),
                                metadata("Part number", "Of the probe", "neuropixels.probe_part_number",
                                         "string", probe.part_number)};
    for (const int channel : saved_channels(description)) {
        entry["channels"].push_back(probe_channel(stream, probe, channel));
    }
    return entry;
}

Json events_entry(const Open_Ephys_Stream& stream) {
    return {
        {"folder_name", stream.folder_name + "/TTL/"},
        {"channel_name", stream.name + " TTL"},
        {"description", stream.kind == Kind::adc ? "Line 1: the sync input; lines 2 to 13: the comparators"
                                                 : "Line 1: the sync input"},
        {"identifier", "orbe.ttl"},
        {"sample_rate", stream.sample_rate},
        {"type", "int16"},
        {"source_processor", processor_name},
        {"stream_name", stream.name},
        {"initial_state", 0},
    };
}

Json messages_entry() {
    return {
        {"folder_name", "MessageCenter/"},
        {"channel_name", "Messages"},
        {"description", "What the recorder has to say"},
        {"identifier", "messagecenter.events"},
        {"sample_rate", ap_sample_rate},
        {"type", "string"},
        {"source_processor", "Message Center"},
        {"stream_name", "MessageCenter"},
    };
}

// Names that are no UTF-8 must not cost the recording.
std::string text_of(const Json& json) {
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

} // namespace

std::filesystem::path open_ephys_recording_folder(const std::filesystem::path& folder) {
    return folder / node_folder / "experiment1" / "recording1";
}

std::filesystem::path open_ephys_structure_path(const std::filesystem::path& folder) {
    return open_ephys_recording_folder(folder) / "structure.oebin";
}

std::filesystem::path open_ephys_settings_path(const std::filesystem::path& folder) {
    return folder / node_folder / "settings.xml";
}

std::filesystem::path open_ephys_messages_folder(const std::filesystem::path& folder) {
    return open_ephys_recording_folder(folder) / "events" / "MessageCenter";
}

std::vector<Open_Ephys_Stream> open_ephys_streams(const std::filesystem::path& folder,
                                                  const Recording_Description& description) {
    const std::filesystem::path recording = open_ephys_recording_folder(folder);
    std::vector<Open_Ephys_Stream> streams;
    const auto add = [&](Kind kind, std::size_t probe, const std::string& name, std::size_t channels,
                         int sample_rate) {
        const std::string folder_name = processor_folder(name);
        const auto step = static_cast<std::uint64_t>(ap_sample_rate / sample_rate);
        streams.push_back({kind, probe, name, folder_name, recording / "continuous" / folder_name,
                           recording / "events" / folder_name / "TTL", channels, sample_rate,
                           description.first_sample / step});
    };
    const std::size_t channels = saved_channels(description).size();
    for (std::size_t probe = 0; probe < description.probes.size(); ++probe) {
        const std::string name = std::string("Probe") + static_cast<char>('A' + probe);
        add(Kind::ap, probe, name + "-AP", channels, ap_sample_rate);
        add(Kind::lfp, probe, name + "-LFP", channels, lfp_sample_rate);
    }
    if (description.adc) {
        add(Kind::adc, 0, "ADC", static_cast<std::size_t>(description.adc->input_count), adc_sample_rate);
    }
    return streams;
}

std::vector<Open_Ephys_Entry> open_ephys_entries(const std::vector<Open_Ephys_Stream>& streams,
                                                 const Recording_Description& description) {
    std::vector<Open_Ephys_Entry> entries;
    for (const Open_Ephys_Stream& stream : streams) {
        entries.push_back({text_of(continuous_entry(stream, description)), text_of(events_entry(stream))});
    }
    return entries;
}

// Put together by hand, because it is written again whenever a stream begins.
std::string open_ephys_structure(const std::vector<Open_Ephys_Entry>& entries,
                                 const std::vector<Open_Ephys_Presence>& presences) {
    std::string continuous;
    std::string events = text_of(messages_entry());
    for (std::size_t stream = 0; stream < entries.size(); ++stream) {
        if (presences.at(stream).has_samples) {
            continuous += (continuous.empty() ? "" : ",\n") + entries[stream].continuous;
        }
        if (presences[stream].has_events) {
            events += ",\n" + entries[stream].events;
        }
    }
    return std::string("{\n\"GUI version\": \"") + interface_version + "\",\n\"continuous\": [\n" +
           continuous + "\n],\n\"events\": [\n" + events + "\n],\n\"spikes\": []\n}\n";
}

} // namespace Pelgar::ORBE::recorder
