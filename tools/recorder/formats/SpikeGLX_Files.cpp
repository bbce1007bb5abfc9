#include "formats/SpikeGLX_Files.h"

#include "description/Time_Text.h"
#include "formats/A_Stream_Sink.h"
#include "formats/Number_Text.h"
#include "probe_geometry/Probe_Geometry.h"

#include <algorithm>
#include <sstream>

namespace Pelgar::ORBE::recorder {

namespace {

using Kind = SpikeGLX_Stream::Kind;

// At the converter, before the amplifiers' gain.
constexpr const char* probe_range_volts = "0.6";
constexpr int probe_largest_value = 512;
constexpr int adc_largest_value = 32768;

std::string yes_or_no(bool yes) {
    return yes ? "true" : "false";
}

// Channels among all that the probe has: the AP band's, the LFP band's, the status.
std::string saved_numbers(const std::vector<int>& saved, bool is_ap) {
    std::vector<int> numbers = saved;
    for (int& number : numbers) {
        number += is_ap ? 0 : static_cast<int>(channel_count);
    }
    numbers.push_back(2 * static_cast<int>(channel_count));
    std::string text;
    for (std::size_t begin = 0; begin < numbers.size();) {
        std::size_t end = begin + 1;
        while (end < numbers.size() && numbers[end] == numbers[end - 1] + 1) {
            ++end;
        }
        text += (begin == 0 ? "" : ",") + std::to_string(numbers[begin]);
        if (end - begin > 1) {
            text += ":" + std::to_string(numbers[end - 1]);
        }
        begin = end;
    }
    return text;
}

std::string size_lines(const SpikeGLX_Stream& stream, std::uint64_t bytes) {
    const std::uint64_t samples = bytes / (stream.column_count * sizeof(std::int16_t));
    return "fileSizeBytes=" + std::to_string(bytes) +
           "\nfileTimeSecs=" + number_text(static_cast<double>(samples) / stream.sample_rate) + "\n";
}

void write_common(std::ostream& text, const SpikeGLX_Stream& stream, const Recording_Description& description,
                  std::uint64_t bytes) {
    const std::string created = time_text(description.start_time);
    text << "appVersion=" << description.program_version << "\n"
         << "fileCreateTime=" << created.substr(0, created.find('.')) << "\n"
         << "fileName=" << stream.data_path.filename().string() << "\n"
         << size_lines(stream, bytes)
         << "firstSample=" << description.first_sample / (stream.kind == Kind::lfp ? 12 : 1) << "\n"
         << "gateMode=Immediate\n"
         << "nDataDirs=1\n"
         << "nSavedChans=" << stream.column_count << "\n"
         << "syncSourceIdx=0\n"
         << "trigMode=Immediate\n"
         << "typeImEnabled=" << description.probes.size() << "\n"
         << "typeNiEnabled=0\n"
         << "typeObEnabled=" << (description.adc ? 1 : 0) << "\n"
         << "orbeSource=" << description.source << "\n";
}

// Electrodes that a channel may be connected to, and the channel's own place in its bank.
int bank_of(const Probe_Description& probe, std::size_t channel) {
    return (electrode_or_bank_0(probe, channel) - static_cast<int>(channel)) /
           static_cast<int>(channel_count);
}

bool is_used(const Channel_Description& channel) {
    return channel.electrode >= 0 && !channel.is_standby;
}

void write_channel_settings(std::ostream& text, const Probe_Description& probe) {
    text << "~imroTbl=(0," << channel_count << ")";
    for (std::size_t channel = 0; channel < channel_count; ++channel) {
        const Channel_Description& settings = probe.channels[channel];
        text << "(" << channel << " " << bank_of(probe, channel) << " " << settings.reference << " "
             << settings.ap_gain << " " << settings.lfp_gain << " " << (probe.ap_filter ? 1 : 0) << ")";
    }
    text << "\n~muxTbl=(" << converter_count << "," << turn_count << ")";
    for (std::size_t turn = 0; turn < turn_count; ++turn) {
        for (std::size_t converter = 0; converter < converter_count; ++converter) {
            text << (converter == 0 ? "(" : " ") << channel_read(converter, turn);
        }
        text << ")";
    }
    text << "\n";
}

// Names, in the order of the file, and their place in that of the whole stream.
void write_channel_map(std::ostream& text, const SpikeGLX_Stream& stream, const std::vector<int>& saved) {
    const bool is_ap = stream.kind == Kind::ap;
    const int offset = is_ap ? 0 : static_cast<int>(channel_count);
    text << "~snsChanMap=(" << channel_count << "," << channel_count << ",1)";
    std::size_t place = 0;
    for (const int channel : saved) {
        text << "(" << (is_ap ? "AP" : "LF") << channel << ";" << channel + offset << ":" << place++ << ")";
    }
    text << "(SY0;" << 2 * channel_count << ":" << place << ")\n";
}

void write_geometry(std::ostream& text, const Probe_Description& probe, const std::vector<int>& saved) {
    const Probe_Geometry geometry = geometry_of(probe.part_number);
    text << "~snsGeomMap=(" << (probe.part_number.empty() ? "NP1010" : probe.part_number) << ",1,0,"
         << number_text(geometry.shank_width) << ")";
    for (const int channel : saved) {
        const auto index = static_cast<std::size_t>(channel);
        const Electrode_Position position = position_of(geometry, electrode_or_bank_0(probe, index));
        text << "(0:" << number_text(position.x) << ":" << number_text(position.y) << ":"
             << is_used(probe.channels[index]) << ")";
    }
    text << "\n~snsShankMap=(1,2," << electrode_count / 2 << ")";
    for (const int channel : saved) {
        const auto index = static_cast<std::size_t>(channel);
        const int electrode = electrode_or_bank_0(probe, index);
        text << "(0:" << electrode % 2 << ":" << electrode / 2 << ":" << is_used(probe.channels[index])
             << ")";
    }
    text << "\n";
}

void write_probe(std::ostream& text, const SpikeGLX_Stream& stream,
                 const Recording_Description& description) {
    const Probe_Description& probe = description.probes.at(stream.probe);
    const std::vector<int> saved = saved_channels(description);
    const bool is_ap = stream.kind == Kind::ap;
    const std::size_t channels = saved.size();
    text << "acqApLfSy=" << channel_count << "," << channel_count << ",1\n"
         << "imAiRangeMax=" << probe_range_volts << "\n"
         << "imAiRangeMin=-" << probe_range_volts << "\n"
         << "imAnyChanFullBand=" << yes_or_no(!probe.ap_filter) << "\n"
         << "imCalibrated=" << yes_or_no(probe.is_calibrated) << "\n"
         << "imChan0apGain=" << probe.channels[0].ap_gain << "\n"
         << "imChan0lfGain=" << probe.channels[0].lfp_gain << "\n"
         << "imDatHs_pn=" << probe.headstage_part_number << "\n"
         << "imDatPrb_dock=1\n"
         << "imDatPrb_pn=" << probe.part_number << "\n"
         << "imDatPrb_port=" << probe.port << "\n"
         << "imDatPrb_slot=2\n"
         << "imDatPrb_sn=" << probe.serial_number << "\n"
         << "imDatPrb_type=0\n"
         << "imMaxInt=" << probe_largest_value << "\n"
         << "imSampRate=" << stream.sample_rate << "\n"
         << "snsApLfSy=" << (is_ap ? channels : 0) << "," << (is_ap ? 0 : channels) << ",1\n"
         << "snsSaveChanSubset=" << saved_numbers(saved, is_ap) << "\n"
         << "typeThis=imec\n";
    std::string standby;
    for (std::size_t channel = 0; channel < channel_count; ++channel) {
        if (probe.channels[channel].is_standby) {
            standby += (standby.empty() ? "" : ",") + std::to_string(channel);
        }
    }
    text << "imStdby=" << standby << "\n";
    write_channel_settings(text, probe);
    write_channel_map(text, stream, saved);
    write_geometry(text, probe, saved);
}

// Readers that do not know the OneBox take the stream for one of the older kind with analog inputs, if it has
// that one's keys as well.
void write_adc(std::ostream& text, const SpikeGLX_Stream& stream, const ADC_Description& adc) {
    const std::string range = number_text(adc.range_volts);
    const int inputs = adc.input_count;
    text << "acqXaDwSy=" << inputs << ",1,1\n"
         << "niAiRangeMax=" << range << "\n"
         << "niAiRangeMin=-" << range << "\n"
         << "niMAGain=1\n"
         << "niMNGain=1\n"
         << "niSampRate=" << stream.sample_rate << "\n"
         << "obAiRangeMax=" << range << "\n"
         << "obAiRangeMin=-" << range << "\n"
         << "obMaxInt=" << adc_largest_value << "\n"
         << "obSampRate=" << stream.sample_rate << "\n"
         << "snsMnMaXaDw=0,0," << inputs << ",2\n"
         << "snsSaveChanSubset=0:" << inputs + 1 << "\n"
         << "snsXaDwSy=" << inputs << ",1,1\n"
         << "typeThis=obx\n"
         << "~snsChanMap=(" << inputs << ",1,1)";
    for (int input = 0; input < inputs; ++input) {
        text << "(XA" << input << ";" << input << ":" << input << ")";
    }
    text << "(XD0;" << inputs << ":" << inputs << ")(SY0;" << inputs + 1 << ":" << inputs + 1 << ")\n";
}

} // namespace

// Readers take what stands between points for the stream.
std::string spikeglx_run_name(const std::filesystem::path& folder) {
    const std::filesystem::path path = std::filesystem::absolute(folder).lexically_normal();
    std::string name = (path.has_filename() ? path : path.parent_path()).filename().string();
    std::replace(name.begin(), name.end(), '.', '_');
    return name;
}

std::vector<SpikeGLX_Stream> spikeglx_streams(const std::filesystem::path& folder,
                                              const Recording_Description& description) {
    const std::string& given = description.run_name;
    const std::string run = given.empty() ? spikeglx_run_name(folder) : given;
    const std::filesystem::path run_folder = folder / (run + "_g0");
    const std::string file = run + "_g0_t0.";
    std::vector<SpikeGLX_Stream> streams;
    const auto add = [&](Kind kind, std::size_t probe, const std::filesystem::path& parent,
                         const std::string& name, const std::string& extension, std::size_t columns,
                         int sample_rate) {
        streams.push_back({kind, probe, name, parent / (file + extension + ".bin"),
                           parent / (file + extension + ".meta"), columns, sample_rate});
    };
    const std::size_t columns = saved_channels(description).size() + 1;
    for (std::size_t probe = 0; probe < description.probes.size(); ++probe) {
        const std::string name = "imec" + std::to_string(probe);
        const std::filesystem::path parent = run_folder / (run + "_g0_" + name);
        add(Kind::ap, probe, parent, name + ".ap", name + ".ap", columns, ap_sample_rate);
        add(Kind::lfp, probe, parent, name + ".lf", name + ".lf", columns, lfp_sample_rate);
    }
    if (description.adc) {
        add(Kind::adc, 0, run_folder, "obx0", "obx0.obx",
            static_cast<std::size_t>(description.adc->input_count) + 2, adc_sample_rate);
    }
    return streams;
}

std::string spikeglx_metadata(const SpikeGLX_Stream& stream, const Recording_Description& description,
                              std::uint64_t bytes) {
    std::ostringstream text;
    write_common(text, stream, description, bytes);
    if (stream.kind == Kind::adc) {
        write_adc(text, stream, description.adc.value());
    } else {
        write_probe(text, stream, description);
    }
    return text.str();
}

std::string with_file_size(const std::string& metadata, const SpikeGLX_Stream& stream, std::uint64_t bytes) {
    std::istringstream lines(metadata);
    std::string text;
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with("fileSizeBytes=")) {
            text += size_lines(stream, bytes);
        } else if (!line.starts_with("fileTimeSecs=")) {
            text += line + "\n";
        }
    }
    return text;
}

} // namespace Pelgar::ORBE::recorder
