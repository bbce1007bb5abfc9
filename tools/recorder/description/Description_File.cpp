#include "description/Description_File.h"

#include "description/Time_Text.h"
#include "description/Whole_File.h"

#include <nlohmann/json.hpp>

#include <stdexcept>

namespace Pelgar::ORBE::recorder {

namespace {

using Json = nlohmann::ordered_json;

// One list a property, with a value a channel: short to read, and what numpy takes.
template <typename Member>
Json by_channel(const Probe_Description& probe, Member Channel_Description::*member) {
    Json list = Json::array();
    for (const Channel_Description& channel : probe.channels) {
        list.push_back(channel.*member);
    }
    return list;
}

template <typename Member>
void read_channels(const Json& list, Probe_Description& probe, Member Channel_Description::*member) {
    if (list.size() != channel_count) {
        throw std::runtime_error("a list of channels has " + std::to_string(list.size()) +
                                 " entries and not " + std::to_string(channel_count));
    }
    for (std::size_t channel = 0; channel < channel_count; ++channel) {
        probe.channels[channel].*member = list.at(channel).get<Member>();
    }
}

void check_between(int value, int least, int most, const std::string& what) {
    if (value < least || value > most) {
        throw std::runtime_error("there is no " + what + " " + std::to_string(value));
    }
}

Json to_json(const Probe_Description& probe) {
    return {
        {"port", probe.port},
        {"serial_number", probe.serial_number},
        {"part_number", probe.part_number},
        {"headstage_part_number", probe.headstage_part_number},
        {"ap_filter", probe.ap_filter},
        {"is_calibrated", probe.is_calibrated},
        {"electrodes", by_channel(probe, &Channel_Description::electrode)},
        {"ap_gains", by_channel(probe, &Channel_Description::ap_gain)},
        {"lfp_gains", by_channel(probe, &Channel_Description::lfp_gain)},
        {"references", by_channel(probe, &Channel_Description::reference)},
        {"is_standby", by_channel(probe, &Channel_Description::is_standby)},
    };
}

Probe_Description probe_from(const Json& json) {
    Probe_Description probe;
    json.at("port").get_to(probe.port);
    json.at("serial_number").get_to(probe.serial_number);
    json.at("part_number").get_to(probe.part_number);
    json.at("headstage_part_number").get_to(probe.headstage_part_number);
    json.at("ap_filter").get_to(probe.ap_filter);
    json.at("is_calibrated").get_to(probe.is_calibrated);
    read_channels(json.at("electrodes"), probe, &Channel_Description::electrode);
    read_channels(json.at("ap_gains"), probe, &Channel_Description::ap_gain);
    read_channels(json.at("lfp_gains"), probe, &Channel_Description::lfp_gain);
    read_channels(json.at("references"), probe, &Channel_Description::reference);
    read_channels(json.at("is_standby"), probe, &Channel_Description::is_standby);
    check_between(probe.port, 1, 4, "port");
    for (const Channel_Description& channel : probe.channels) {
        check_between(channel.electrode, -1, 959, "electrode");
        check_between(channel.ap_gain, 1, 3000, "AP gain");
        check_between(channel.lfp_gain, 1, 3000, "LFP gain");
    }
    return probe;
}

} // namespace

std::string to_json(const Recording_Description& description, const std::string& format) {
    Json json{
        {"format", format},
        {"start_time", time_text(description.start_time)},
        {"source", description.source},
        {"program_version", description.program_version},
        {"run_name", description.run_name},
        {"first_sample", description.first_sample},
        {"saved_channels", saved_channels(description)},
        {"probes", Json::array()},
    };
    for (const Probe_Description& probe : description.probes) {
        json["probes"].push_back(to_json(probe));
    }
    if (description.adc) {
        json["adc"] = {{"range_volts", description.adc->range_volts},
                       {"input_count", description.adc->input_count}};
    }
    // Names that are no UTF-8 must not cost the recording.
    return json.dump(1, '\t', false, Json::error_handler_t::replace) + "\n";
}

Described_Folder from_json(const std::string& text) {
    try {
        const Json json = Json::parse(text);
        Described_Folder folder;
        json.at("format").get_to(folder.format);
        Recording_Description& description = folder.description;
        const auto start_time = time_from_text(json.at("start_time").get<std::string>());
        if (!start_time) {
            throw std::runtime_error("the start time is none");
        }
        description.start_time = *start_time;
        json.at("source").get_to(description.source);
        json.at("program_version").get_to(description.program_version);
        description.run_name = json.value("run_name", "");
        json.at("first_sample").get_to(description.first_sample);
        json.at("saved_channels").get_to(description.saved_channels);
        int last = -1;
        for (const int channel : description.saved_channels) {
            if (channel <= last || channel >= static_cast<int>(channel_count)) {
                throw std::runtime_error("the saved channels are not ascending numbers below 384");
            }
            last = channel;
        }
        for (const Json& probe : json.at("probes")) {
            description.probes.push_back(probe_from(probe));
        }
        if (json.contains("adc")) {
            ADC_Description adc;
            json["adc"].at("range_volts").get_to(adc.range_volts);
            json["adc"].at("input_count").get_to(adc.input_count);
            check_between(adc.input_count, 1, adc_input_count, "number of ADC inputs");
            if (!(adc.range_volts > 0.0)) {
                throw std::runtime_error("the range of the ADC inputs is not above 0");
            }
            description.adc = adc;
        }
        return folder;
    } catch (const Json::exception& exception) {
        throw std::runtime_error(exception.what());
    }
}

void write_description(const std::filesystem::path& folder, const std::string& format,
                       const Recording_Description& description) {
    write_file(folder / description_file_name, to_json(description, format));
}

Described_Folder read_description(const std::filesystem::path& folder) {
    const std::filesystem::path path = folder / description_file_name;
    const std::string text = read_file(path);
    try {
        return from_json(text);
    } catch (const std::runtime_error& error) {
        throw std::runtime_error("'" + path.string() + "' is damaged: " + error.what());
    }
}

} // namespace Pelgar::ORBE::recorder
