#include "ports/Probe_Identity.h"

#include "common/Copy_Text.h"
#include "connection/Box_Connection.h"
#include "ports/Probe_Ports.h"
#include "probe_link/EEPROM_Layout.h"

#include <loguru.hpp>

#include <algorithm>
#include <array>
#include <exception>
#include <fstream>
#include <string>
#include <vector>

namespace Pelgar::ORBE {

namespace {

// Reads at most `max` characters of a text, one register each.
std::string read_text(NP_Probe_Config_Module& config, std::uint8_t device, std::uint8_t first_register,
                      unsigned max) {
    std::vector<char> text(std::size_t{max} + 1);
    return {text.data(), config.read_string(device, first_register, text.data(), max)};
}

} // namespace

bool Probe_Identity::readProbeSN(unsigned port, unsigned long long* sn) {
    LOG_SCOPE_F(INFO, "readProbeSN");
    if (m_box.is_simulation()) {
        return true;
    }
    try {
        m_ports.assign_uart(port);
        std::array<std::uint8_t, probe_eeprom::serial_number_length> bytes{};
        m_ports.at(port).config().read_registers(probe_eeprom::address, probe_eeprom::serial_number,
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

bool Probe_Identity::readProbePN(unsigned port, char* buffer, unsigned length) {
    LOG_SCOPE_F(INFO, "readProbePN");
    if (m_box.is_simulation()) {
        copy_text("PRB_1_4_0480_1", buffer, length);
        return true;
    }
    try {
        m_ports.assign_uart(port);
        const unsigned max = std::min(length, probe_eeprom::part_number_max_length);
        copy_text(read_text(m_ports.at(port).config(), probe_eeprom::address, probe_eeprom::part_number, max),
                  buffer, length);
        return true;
    } catch (const std::exception& exception) {
        LOG_F(ERROR, "Exception caught during readProbePN : %s", exception.what());
        return false;
    }
}

bool Probe_Identity::readHSPN(unsigned port, char* buffer, unsigned length) {
    LOG_SCOPE_F(INFO, "readHSPN");
    if (m_box.is_simulation()) {
        copy_text("NP2_HS_30", buffer, length);
        return true;
    }
    try {
        m_ports.assign_uart(port);
        NP_Probe_Config_Module& config = m_ports.at(port).config();
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

bool Probe_Identity::dump_eeprom(unsigned port, const char* path, unsigned count) {
    LOG_SCOPE_F(INFO, "dump_eeprom");
    return dump_eeprom_of_device(port, probe_eeprom::address, path, count);
}

bool Probe_Identity::dump_flex_eeprom(unsigned port, const char* path, unsigned count) {
    LOG_SCOPE_F(INFO, "dump_flex_eeprom");
    return dump_eeprom_of_device(port, probe_eeprom::address, path, count);
}

bool Probe_Identity::dump_hs_eeprom(unsigned port, const char* path, unsigned count) {
    LOG_SCOPE_F(INFO, "dump_hs_eeprom");
    return dump_eeprom_of_device(port, hs_eeprom::address, path, count);
}

bool Probe_Identity::dump_eeprom_of_device(unsigned port, std::uint8_t device, const char* path,
                                           unsigned count) {
    const char* const name = path == nullptr ? "" : path;
    LOG_F(INFO, "Reading %d bytes from eeprom at adres : %x to file %s", count, device, name);
    if (count > eeprom_size) {
        LOG_F(ERROR, "an eeprom holds %d bytes", eeprom_size);
        return false;
    }
    return m_ports.run_on_port("eeprom dump", port, [&] {
        std::vector<std::uint8_t> bytes(count);
        m_ports.at(port).config().read_registers(device, 0, bytes.data(), count);
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
