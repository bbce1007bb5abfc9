// The probe half of the controller: bring-up, configuration, calibration and identity of the probes.
#include "controller/C_ORBE_Controller_Library.h"

#include "common/Checked_Index.h"
#include "common/Console.h"
#include "common/Copy_Text.h"
#include "probe_link/ADC_Calibration.h"
#include "probe_link/Headstage_Devices.h"
#include "probe_link/NP_Probe_Config_Reader.h"
#include "probe_link/NP_Probe_Layout.h"
#include "probe_link/NP_Probe_Registers.h"

#include <loguru.hpp>

#include <algorithm>
#include <array>
#include <exception>
#include <fstream>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

namespace Pelgar::ORBE {

namespace {

// A host's number as the configuration takes it. What no byte can hold becomes a number that no setting
// accepts.
std::uint8_t to_setting(int number) {
    constexpr std::uint8_t never_accepted = 254;
    const bool fits = number >= 0 && number <= std::numeric_limits<std::uint8_t>::max();
    return fits ? static_cast<std::uint8_t>(number) : never_accepted;
}

// Reads at most `max` characters of a text, one register each.
std::string read_text(NP_Probe_Config_Module& config, std::uint8_t device, std::uint8_t first_register,
                      unsigned max) {
    std::vector<char> text(std::size_t{max} + 1);
    return {text.data(), config.read_string(device, first_register, text.data(), max)};
}

} // namespace

void ORBE_Controller_Library::assign_uart(unsigned port) {
    const unsigned channel = std::min<unsigned>(port, std::numeric_limits<unsigned char>::max());
    m_controller->configurator().assign_uart_to_np_channel(static_cast<unsigned char>(channel));
}

NP_Probe_Control_Module& ORBE_Controller_Library::probe_control(unsigned port) {
    const auto& control = checked_at(m_np_probe_control, port);
    if (!control) {
        throw std::runtime_error("probe port is not initialised");
    }
    return *control;
}

C_L2_CH_Gain_Fix_Filter& ORBE_Controller_Library::gain_filter(unsigned port) {
    const auto& filter = checked_at(m_gain_filters, port);
    if (!filter) {
        throw std::runtime_error("probe port is not initialised");
    }
    return *filter;
}

I2C_Over_GSML_Module& ORBE_Controller_Library::probe_link() {
    if (!m_i2c) {
        throw std::runtime_error("probe port is not initialised");
    }
    return *m_i2c;
}

bool ORBE_Controller_Library::probe_init_part_1(unsigned port) {
    LOG_SCOPE_F(INFO, "probe_init_part_1");
    LOG_F(INFO, "ORBE_Controller_Library::probe_init_part_1() np_port_id : %d", port);
    if (port >= port_count) {
        console::out("ORBE_Controller_Library::init invalid port id parameter\n");
        return false;
    }
    if (m_simulation_mode) {
        console::out("skipping init for simulation mode\n");
        return true;
    }
    try {
        assign_uart(port);
        I2C_Over_GSML_Module& link = probe_link();
        std::uint8_t id = 0;
        link.read_deserializer(deserializer::device_id, &id);
        VLOG_F(1, "Deserializer device id : %d", id);
        if (id != deserializer::expected_device_id) {
            LOG_F(ERROR, "Deserializer device id does not match. Read : %d", id);
            return false;
        }
        link.read_serializer(serializer::device_id, &id);
        VLOG_F(1, "Serializer device id : %d", id);
        if (id != serializer::expected_device_id) {
            LOG_F(ERROR, "Serializer device id does not match. Read : %d", id);
            return false;
        }
        link.write_serializer(serializer::mode, serializer::mode_normal);
        return true;
    } catch (const std::exception& exception) {
        LOG_F(ERROR, "Exception caught while probe probe_init_part_1 : %s", exception.what());
        set_error_level(Error_Level::probe_link);
        return false;
    }
}

bool ORBE_Controller_Library::probe_init_part_2(unsigned port, E_ORBE_Init_Config init_config) {
    LOG_SCOPE_F(INFO, "probe_init_part_2");
    LOG_F(INFO, "ORBE_Controller_Library::probe_init_part_2() np_port_id : %d, init_config : %d", port,
          static_cast<int>(init_config));
    if (port >= port_count) {
        console::out("ORBE_Controller_Library::init invalid port id parameter\n");
        return false;
    }
    assign_uart(port);
    const bool initialised = np_control_init(port, init_config);
    if (!initialised) {
        LOG_F(ERROR, "probe_init_part_2 failed");
    }
    return initialised;
}

bool ORBE_Controller_Library::np_control_init(unsigned port, E_ORBE_Init_Config init_config) {
    LOG_SCOPE_F(INFO, "np_control_init");
    try {
        NP_Probe_Control_Module& control = probe_control(port);
        if (init_config == E_ORBE_Init_Config::quick) {
            control.np_quick_init();
        } else {
            control.np_init();
        }
        if (init_config == E_ORBE_Init_Config::psb_test) {
            control.bist_PSB();
        } else if (init_config == E_ORBE_Init_Config::channel_test) {
            control.bist_channel();
        } else if (init_config == E_ORBE_Init_Config::pixel_test) {
            control.bist_pixel();
        }
        control.configure_serializer(true);
        return true;
    } catch (const std::exception& exception) {
        LOG_F(ERROR, "Exception caught while np_control_init : %s", exception.what());
        set_error_level(Error_Level::probe_link);
        return false;
    }
}

bool ORBE_Controller_Library::writeProbeConfiguration(unsigned port, bool readcheck) {
    LOG_SCOPE_F(INFO, "writeProbeConfiguration");
    if (port >= port_count) {
        LOG_F(ERROR, "Invalid argument at writeProbeConfiguration");
        return false;
    }
    try {
        assign_uart(port);
        probe_control(port).config().upload_configuration(readcheck);
    } catch (const std::exception& exception) {
        LOG_F(ERROR, "Exception caught during probe configuration load : %s", exception.what());
        return false;
    }
    if (m_simulation_mode) {
        console::out("emulating 2 second init (ORBE_Controller_Library::writeProbeConfiguration)\n");
    }
    return true;
}

bool ORBE_Controller_Library::selectElectrode(unsigned port, int channel, int /*shank*/, int bank) {
    const auto number = static_cast<std::uint32_t>(channel);
    const std::uint8_t bank_setting = to_setting(bank);
    if (probe_control(port).config().select_electrode(number, bank_setting) != 0) {
        return false;
    }
    // A disconnected channel has no electrode; the filter goes on with the factor that it had.
    if (bank_setting != probe_layout::disconnected_bank) {
        gain_filter(port).set_channel_bank(number, bank_setting);
    }
    return true;
}

bool ORBE_Controller_Library::setGain(unsigned port, int channel, int ap_gain, int lfp_gain) {
    const auto number = static_cast<std::uint32_t>(channel);
    const std::uint8_t ap_code = to_setting(ap_gain);
    const std::uint8_t lfp_code = to_setting(lfp_gain);
    if (probe_control(port).config().set_gain(number, ap_code, lfp_code) != 0) {
        return false;
    }
    gain_filter(port).set_channel_gain_codes(number, ap_code, lfp_code);
    return true;
}

bool ORBE_Controller_Library::getGain(unsigned port, int channel, int* ap_gain, int* lfp_gain) {
    std::uint32_t ap_code = 0;
    std::uint32_t lfp_code = 0;
    if (probe_control(port).config().get_gain(static_cast<std::uint32_t>(channel), &ap_code, &lfp_code) !=
        0) {
        return false;
    }
    if (ap_gain != nullptr) {
        *ap_gain = static_cast<int>(ap_code);
    }
    if (lfp_gain != nullptr) {
        *lfp_gain = static_cast<int>(lfp_code);
    }
    return true;
}

bool ORBE_Controller_Library::setReference(unsigned port, int channel, int /*shank*/, int reference,
                                           int int_ref_bank) {
    return probe_control(port).config().set_reference(static_cast<std::uint32_t>(channel),
                                                      to_setting(reference), to_setting(int_ref_bank)) == 0;
}

bool ORBE_Controller_Library::setAPCornerFrequency(unsigned port, int channel, bool disable) {
    return probe_control(port).config().set_ap_filter(static_cast<std::uint32_t>(channel), disable) == 0;
}

void ORBE_Controller_Library::clear_all_electrode_to_bank_assignments(unsigned port) {
    LOG_SCOPE_F(INFO, "clear_all_electrode_to_bank_assignments");
    LOG_F(INFO, "Clearing all channel to pixel assignments.");
    run_on_port("clear_all_electrode_to_bank_assignments", port, [&] {
        NP_Probe_Config_Module& config = probe_control(port).config();
        for (std::uint32_t channel = 0; channel < demux::channel_count; ++channel) {
            if (channel != probe_layout::reference_channel) {
                config.select_electrode(channel, probe_layout::disconnected_bank);
            }
        }
        return true;
    });
}

bool ORBE_Controller_Library::setADCCalibration(unsigned port, const char* path) {
    LOG_SCOPE_F(INFO, "setADCCalibration");
    const bool loaded = run_on_port("setADCCalibration", port, [&] {
        NP_Probe_Config_Module& config = probe_control(port).config();
        NP_Probe_Config_Reader reader;
        if (path == nullptr || !reader.load_adc_calibration_data_from_file(path)) {
            return false;
        }
        bool accepted = true;
        for (const ADC_Calibration& calibration : reader.adc_calibration()) {
            accepted = config.set_adc_calibration(&calibration) == 0 && accepted;
        }
        return accepted;
    });
    if (loaded) {
        LOG_F(INFO, "ADC Calibration loaded");
    } else {
        LOG_F(ERROR, "ADC Calibration load error");
    }
    return loaded;
}

bool ORBE_Controller_Library::setGainCalibration(unsigned port, const char* path) {
    LOG_SCOPE_F(INFO, "setGainCalibration");
    return run_on_port("setGainCalibration", port,
                       [&] { return gain_filter(port).load_gain_calibration(path == nullptr ? "" : path); });
}

bool ORBE_Controller_Library::readProbeSN(unsigned port, unsigned long long* sn) {
    LOG_SCOPE_F(INFO, "readProbeSN");
    if (m_simulation_mode) {
        return true;
    }
    try {
        assign_uart(port);
        std::array<std::uint8_t, probe_eeprom::serial_number_length> bytes{};
        probe_control(port).config().read_registers(probe_eeprom::address, probe_eeprom::serial_number,
                                                    bytes.data(), probe_eeprom::serial_number_length);
        unsigned long long number = 0;
        for (std::size_t i = bytes.size(); i-- > 0;) {
            number = (number << 8U) | bytes[i];
        }
        if (sn != nullptr) {
            *sn = number;
        }
        return true;
    } catch (const std::exception& exception) {
        LOG_F(ERROR, "Exception caught during readProbeSN : %s", exception.what());
        return false;
    }
}

bool ORBE_Controller_Library::readProbePN(unsigned port, char* buffer, unsigned length) {
    LOG_SCOPE_F(INFO, "readProbePN");
    if (m_simulation_mode) {
        copy_text("PRB_1_4_0480_1", buffer, length);
        return true;
    }
    try {
        assign_uart(port);
        const unsigned max = std::min(length, probe_eeprom::part_number_max_length);
        copy_text(
            read_text(probe_control(port).config(), probe_eeprom::address, probe_eeprom::part_number, max),
            buffer, length);
        return true;
    } catch (const std::exception& exception) {
        LOG_F(ERROR, "Exception caught during readProbePN : %s", exception.what());
        return false;
    }
}

bool ORBE_Controller_Library::readHSPN(unsigned port, char* buffer, unsigned length) {
    LOG_SCOPE_F(INFO, "readHSPN");
    if (m_simulation_mode) {
        copy_text("NP2_HS_30", buffer, length);
        return true;
    }
    try {
        assign_uart(port);
        NP_Probe_Config_Module& config = probe_control(port).config();
        std::array<std::uint8_t, 2> bytes{};
        config.read_registers(hs_eeprom::address, hs_eeprom::version, bytes.data(), bytes.size());
        const unsigned version = bytes[0] | (static_cast<unsigned>(bytes[1]) << 8U);
        // Registers are numbered by one byte: reading must end with the last one, not wrap to the first.
        std::string text;
        if (version == hs_eeprom::version_5_2) {
            LOG_F(INFO, "Reading version 5.2 HS part number");
            text = read_text(config, hs_eeprom::address, hs_eeprom::part_number_5_2,
                             std::min(length, eeprom_size - hs_eeprom::part_number_5_2));
        } else if (version == hs_eeprom::version_5_3) {
            LOG_F(INFO, "Reading version 5.3 HS part number");
            text = read_text(config, hs_eeprom::address, hs_eeprom::part_number_5_3,
                             std::min(length, eeprom_size - hs_eeprom::part_number_5_3));
        } else {
            LOG_F(WARNING, "Unindentifed HS EEPROM version : %x", version);
            return true;
        }
        copy_text(text, buffer, length);
        if (!text.empty()) {
            VLOG_F(1, "%d characters read from EEPROM", static_cast<int>(text.size()));
        }
        return true;
    } catch (const std::exception& exception) {
        LOG_F(ERROR, "Exception caught during readHSPN : %s", exception.what());
        return false;
    }
}

bool ORBE_Controller_Library::dump_eeprom(unsigned port, const char* path, unsigned count) {
    LOG_SCOPE_F(INFO, "dump_eeprom");
    return dump_eeprom_of_device(port, probe_eeprom::address, path, count);
}

bool ORBE_Controller_Library::dump_flex_eeprom(unsigned port, const char* path, unsigned count) {
    LOG_SCOPE_F(INFO, "dump_flex_eeprom");
    return dump_eeprom_of_device(port, probe_eeprom::address, path, count);
}

bool ORBE_Controller_Library::dump_hs_eeprom(unsigned port, const char* path, unsigned count) {
    LOG_SCOPE_F(INFO, "dump_hs_eeprom");
    return dump_eeprom_of_device(port, hs_eeprom::address, path, count);
}

bool ORBE_Controller_Library::dump_eeprom_of_device(unsigned port, std::uint8_t device, const char* path,
                                                    unsigned count) {
    const char* const name = path == nullptr ? "" : path;
    LOG_F(INFO, "Reading %d bytes from eeprom at adres : %x to file %s", count, device, name);
    if (count > eeprom_size) {
        LOG_F(ERROR, "an eeprom holds %d bytes", eeprom_size);
        return false;
    }
    return run_on_port("eeprom dump", port, [&] {
        std::vector<std::uint8_t> bytes(count);
        probe_control(port).config().read_registers(device, 0, bytes.data(), count);
        std::ofstream file(name, std::ios::binary | std::ios::trunc);
        file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        file.close();
        if (!file) {
            LOG_F(ERROR, "eeprom dump cannot be written to file %s", name);
        }
        return !file.fail();
    });
}

} // namespace Pelgar::ORBE
