#include "bist/Port_Self_Tests.h"

#include "bist/PSB_Self_Test.h"
#include "bist/Signal_Self_Test.h"
#include "connection/Box_Connection.h"
#include "ports/NP_Port_Locks.h"
#include "ports/Probe_Ports.h"
#include "probe_link/EEPROM_Layout.h"
#include "probe_link/NP_Probe_Registers.h"
#include "resources/Resource_Directory.h"
#include "streaming/Box_Stream.h"

#include <loguru.hpp>

#include <array>
#include <exception>
#include <utility>

namespace Pelgar::ORBE {

namespace {

constexpr std::uint8_t eeprom_bytes_compared = 16;
constexpr std::array<std::uint8_t, 2> register_patterns{0x55, 0xAA};

} // namespace

Port_Self_Tests::Port_Self_Tests(const Box_Connection& box, Probe_Ports& ports, const NP_Port_Locks& locks,
                                 Probe_Bring_Up& bring_up, Box_Stream& stream)
    : m_box(box), m_ports(ports), m_locks(locks), m_bring_up(bring_up), m_stream(stream),
      m_self_test_directory(default_resource_directory()) {}

bool Port_Self_Tests::skips_bist(const char* name) const {
    if (m_box.is_simulation()) {
        LOG_F(INFO, "%s succeeds without a test in simulation mode", name);
    }
    return m_box.is_simulation();
}

bool Port_Self_Tests::set_bist_signal_mode(unsigned port, bool enable) {
    LOG_SCOPE_F(INFO, "set_bist_signal_mode");
    return m_ports.run_on_port("set_bist_signal_mode", port, [&] {
        NP_Probe_Control_Module& control = m_ports.at(port).control();
        return (enable ? control.bist_pixel() : control.bist_end()) == 0;
    });
}

bool Port_Self_Tests::bist_start_PBRS(unsigned port) {
    LOG_SCOPE_F(INFO, "bist_start_PBRS");
    return m_ports.run_on_port("bist_start_PBRS", port, [&] {
        m_ports.at(port).config().start_prbs_test();
        return true;
    });
}

bool Port_Self_Tests::bist_stop_PBRS(unsigned port, int* errors) {
    LOG_SCOPE_F(INFO, "bist_stop_PBRS");
    return m_ports.run_on_port("bist_stop_PBRS", port, [&] {
        const std::uint32_t count = m_ports.at(port).config().stop_prbs_test();
        if (errors != nullptr) {
            *errors = static_cast<int>(count);
        }
        return true;
    });
}

bool Port_Self_Tests::bist_Probe_SR(unsigned port) {
    LOG_SCOPE_F(INFO, "bist_Probe_SR");
    return m_ports.run_on_port("bist_Probe_SR", port, [&] {
        m_ports.at(port).config().upload_configuration(true);
        return true;
    });
}

bool Port_Self_Tests::bist_Eeproms(unsigned port) {
    LOG_SCOPE_F(INFO, "bist_Eeproms");
    if (skips_bist("bist_Eeproms")) {
        return true;
    }
    return m_ports.run_on_port("bist_Eeproms", port, [&] {
        NP_Probe_Config_Module& config = m_ports.at(port).config();
        bool agree = true;
        for (const std::uint8_t device : {probe_eeprom::address, hs_eeprom::address}) {
            std::array<std::uint8_t, eeprom_bytes_compared> first{};
            std::array<std::uint8_t, eeprom_bytes_compared> second{};
            config.read_registers(device, 0, first.data(), first.size());
            config.read_registers(device, 0, second.data(), second.size());
            if (first != second) {
                LOG_F(ERROR, "eeprom at adres : %x does not read the same twice", device);
                agree = false;
            }
        }
        return agree;
    });
}

bool Port_Self_Tests::bist_IIC(unsigned port) {
    LOG_SCOPE_F(INFO, "bist_IIC");
    if (skips_bist("bist_IIC")) {
        return true;
    }
    return m_ports.run_on_port("bist_IIC", port, [&] {
        I2C_Over_GSML_Module& link = m_ports.link();
        std::uint8_t before = 0;
        link.read_asic(asic::test_3, &before);
        bool agree = true;
        try {
            for (const std::uint8_t pattern : register_patterns) {
                link.write_asic(asic::test_3, pattern, false);
                std::uint8_t after = 0;
                link.read_asic(asic::test_3, &after);
                if (after != pattern) {
                    LOG_F(ERROR, "probe register %02x reads %02x instead of %02x", asic::test_3, after,
                          pattern);
                    agree = false;
                }
            }
        } catch (...) {
            link.write_asic(asic::test_3, before, true);
            throw;
        }
        link.write_asic(asic::test_3, before, false);
        return agree;
    });
}

bool Port_Self_Tests::bist_HB(unsigned port) {
    LOG_SCOPE_F(INFO, "bist_HB");
    if (skips_bist("bist_HB")) {
        return true;
    }
    return m_ports.run_on_port("bist_HB", port, [&] {
        const bool locked = m_locks.is_locked_now(port);
        if (!locked) {
            LOG_F(ERROR, "the link of port %d is not locked", port);
        }
        return locked;
    });
}

bool Port_Self_Tests::run_with_stream(const char* name, unsigned port,
                                      const std::function<bool()>& operation) {
    if (m_stream.is_enabled()) {
        LOG_F(ERROR, "%s needs the stream, which is in use", name);
        return false;
    }
    return m_ports.run_on_port(name, port, operation);
}

bool Port_Self_Tests::bist_PSB(unsigned port) {
    LOG_SCOPE_F(INFO, "bist_PSB");
    return run_with_stream("bist_PSB", port, [&] { return execute_psb_test(port, m_self_test_directory); });
}

bool Port_Self_Tests::bist_Signal(unsigned port) {
    LOG_SCOPE_F(INFO, "bist_Signal");
    return run_with_stream("bist_Signal", port,
                           [&] { return execute_bist_signal_test(port, m_self_test_directory); });
}

bool Port_Self_Tests::execute_psb_test(unsigned port, const std::string& directory) {
    return run_psb_test(m_box, m_bring_up, m_stream, port, directory);
}

bool Port_Self_Tests::execute_bist_signal_test(unsigned port, const std::string& directory) {
    return run_signal_test(m_box, m_bring_up, m_stream, port, directory);
}

void Port_Self_Tests::set_self_test_directory(std::string directory) {
    m_self_test_directory = std::move(directory);
}

} // namespace Pelgar::ORBE
