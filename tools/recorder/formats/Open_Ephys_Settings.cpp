#include "formats/Open_Ephys_Settings.h"

#include "description/Time_Text.h"
#include "formats/Number_Text.h"
#include "probe_geometry/Probe_Geometry.h"

#include <sstream>

namespace Pelgar::ORBE::recorder {

namespace {

std::string escaped(const std::string& text) {
    std::string result;
    for (const char character : text) {
        switch (character) {
        case '&':
            result += "&amp;";
            break;
        case '<':
            result += "&lt;";
            break;
        case '"':
            result += "&quot;";
            break;
        default:
            result += character;
        }
    }
    return result;
}

template <typename Value>
void write_by_channel(std::ostream& text, const char* name, const Recording_Description& description,
                      Value value) {
    text << "          <" << name;
    for (const int channel : saved_channels(description)) {
        text << " CH" << channel << "=\"" << value(static_cast<std::size_t>(channel)) << "\"";
    }
    text << "/>\n";
}

void write_probe(std::ostream& text, const Recording_Description& description, const Probe_Description& probe,
                 char letter) {
    const Probe_Geometry geometry = geometry_of(probe.part_number);
    const auto electrode = [&](std::size_t channel) { return electrode_or_bank_0(probe, channel); };
    text << "        <NP_PROBE slot=\"2\" port=\"" << probe.port << "\" dock=\"1\" probe_serial_number=\""
         << probe.serial_number << "\" probe_part_number=\"" << escaped(probe.part_number)
         << "\" headstage_part_number=\"" << escaped(probe.headstage_part_number)
         << "\" probe_name=\"Neuropixels 1.0\" custom_probe_name=\"Probe" << letter << "\" num_adcs=\""
         << converter_count << "\" isEnabled=\"1\" apGainValue=\"" << probe.channels[0].ap_gain
         << "x\" lfpGainValue=\"" << probe.channels[0].lfp_gain << "x\" filterCut=\""
         << (probe.ap_filter ? "ON" : "OFF") << "\">\n";
    write_by_channel(text, "CHANNELS", description, [&](std::size_t channel) {
        return electrode(channel) / static_cast<int>(channel_count);
    });
    write_by_channel(text, "ELECTRODE_XPOS", description, [&](std::size_t channel) {
        return number_text(position_of(geometry, electrode(channel)).x);
    });
    write_by_channel(text, "ELECTRODE_YPOS", description, [&](std::size_t channel) {
        return number_text(position_of(geometry, electrode(channel)).y);
    });
    text << "        </NP_PROBE>\n";
}

} // namespace

std::string open_ephys_settings(const Recording_Description& description) {
    std::ostringstream text;
    text << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n\n<SETTINGS>\n  <INFO>\n    "
            "<VERSION>0.6.7</VERSION>\n"
         << "    <DATE>" << time_text(description.start_time) << "</DATE>\n  </INFO>\n  <SIGNALCHAIN>\n"
         << "    <PROCESSOR name=\"Neuropix-PXI\" pluginName=\"Neuropix-PXI\" nodeId=\"100\">\n"
         << "      <EDITOR>\n";
    char letter = 'A';
    for (const Probe_Description& probe : description.probes) {
        write_probe(text, description, probe, letter++);
    }
    text << "      </EDITOR>\n    </PROCESSOR>\n  </SIGNALCHAIN>\n</SETTINGS>\n";
    return text.str();
}

} // namespace Pelgar::ORBE::recorder
