#include "Probe_Set_Up.h"

#include "Library_Call.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <string>

namespace Pelgar::ORBE::recorder {

namespace {

using namespace Neuropixels;

constexpr int dock = 1;
constexpr int shank = 0;
constexpr int no_bank = 255;
constexpr int first_internal_reference = 2;

int code_of_gain(int gain) {
    return static_cast<int>(std::find(gains.begin(), gains.end(), gain) - gains.begin());
}

class Probe_Set_Up {
public:
    Probe_Set_Up(int slot, int port, const Probe_Options& options)
        : m_slot(slot), m_port(port), m_options(options), m_where(" on port " + std::to_string(port)) {}

    Probe_Description run(bool is_simulation) {
        must(openPort(m_slot, m_port), "the headstage does not answer");
        must(openProbe(m_slot, m_port, dock), "the probe does not open");
        must(Neuropixels::init(m_slot, m_port, dock), "the probe does not come up");
        identify();
        calibrate(is_simulation);
        must(setOPMODE(m_slot, m_port, dock, RECORDING), "the probe does not go to recording");
        for (int channel = 0; channel < static_cast<int>(channel_count); ++channel) {
            set_channel(channel);
        }
        must(writeProbeConfiguration(m_slot, m_port, dock, true),
             "the probe does not take its configuration");
        return m_probe;
    }

private:
    void must(NP_ErrorCode result, const std::string& what) const { must_succeed(result, what + m_where); }

    void identify() {
        HardwareID headstage{};
        must(getHeadstageHardwareID(m_slot, m_port, &headstage), "the headstage does not tell its name");
        HardwareID probe{};
        must(getProbeHardwareID(m_slot, m_port, dock, &probe), "the probe does not tell its name");
        m_probe.port = m_port;
        m_probe.serial_number = probe.SerialNumber;
        m_probe.part_number = probe.ProductNumber;
        m_probe.headstage_part_number = headstage.ProductNumber;
        m_probe.ap_filter = m_options.ap_filter;
    }

    // Before the electrodes are chosen: a gain calibration puts all channels on bank 0.
    void calibrate(bool is_simulation) {
        const std::string number = std::to_string(m_probe.serial_number);
        if (!m_options.calibration) {
            if (!m_options.may_lack_calibration && !is_simulation) {
                throw std::runtime_error(
                    "the probe " + number + m_where +
                    " needs its calibration (--calibration DIR); to record without one, say "
                    "--no-calibration");
            }
            return;
        }
        const std::filesystem::path folder = *m_options.calibration / number;
        const std::filesystem::path converters = folder / (number + "_ADCCalibration.csv");
        const std::filesystem::path amplifiers =
            gain_calibration_file(*m_options.calibration, m_probe.serial_number);
        for (const auto& file : {converters, amplifiers}) {
            if (!std::filesystem::exists(file)) {
                if (m_options.may_lack_calibration) {
                    return;
                }
                throw std::runtime_error(
                    "the probe " + number + m_where + " has no calibration file '" + file.string() +
                    "'; to record it without a calibration, say --no-calibration as well");
            }
        }
        must(setADCCalibration(m_slot, m_port, converters.string().c_str()),
             "'" + converters.string() + "' is no calibration of the converters");
        must(setGainCalibration(m_slot, m_port, dock, amplifiers.string().c_str()),
             "'" + amplifiers.string() + "' is no calibration of the gains");
        m_probe.is_calibrated = true;
    }

    void set_channel(int channel) {
        Channel_Description& described = m_probe.channels.at(static_cast<std::size_t>(channel));
        described.electrode = m_options.electrodes.electrode(m_port, channel);
        described.ap_gain = m_options.ap_gain;
        described.lfp_gain = m_options.lfp_gain;
        described.reference = m_options.reference;
        const std::string what = "channel " + std::to_string(channel) + " does not take ";
        if (channel != Electrode_Map::reference_channel) {
            must(selectElectrode(m_slot, m_port, dock, channel, shank, no_bank),
                 what + "leave of its electrodes");
        }
        if (described.electrode != Electrode_Map::disconnected) {
            const int bank = described.electrode / static_cast<int>(channel_count);
            must(selectElectrode(m_slot, m_port, dock, channel, shank, bank), what + "its electrode");
        }
        const bool is_internal = m_options.reference >= first_internal_reference;
        must(setReference(m_slot, m_port, dock, channel, shank,
                          is_internal ? INT_REF : static_cast<channelreference_t>(m_options.reference),
                          is_internal ? m_options.reference - first_internal_reference : 0),
             what + "its reference");
        must(setGain(m_slot, m_port, dock, channel, code_of_gain(m_options.ap_gain),
                     code_of_gain(m_options.lfp_gain)),
             what + "its gains");
        must(setAPCornerFrequency(m_slot, m_port, dock, channel, !m_options.ap_filter), what + "its filter");
        must(setStdb(m_slot, m_port, dock, channel, false), what + "its power");
    }

    int m_slot;
    int m_port;
    const Probe_Options& m_options;
    std::string m_where;
    Probe_Description m_probe;
};

} // namespace

std::filesystem::path gain_calibration_file(const std::filesystem::path& calibrations,
                                            std::uint64_t serial_number) {
    const std::string number = std::to_string(serial_number);
    return calibrations / number / (number + "_gainCalValues.csv");
}

Probe_Description set_up_probe(int slot, int port, const Probe_Options& options, bool is_simulation) {
    return Probe_Set_Up(slot, port, options).run(is_simulation);
}

} // namespace Pelgar::ORBE::recorder
