// The self tests of a probe port.
#include "controller/C_ORBE_Controller_Library.h"

#include "controller/PSB_Self_Test.h"
#include "controller/Signal_Self_Test.h"
#include "probe_link/Headstage_Devices.h"
#include "probe_link/NP_Probe_Registers.h"

#include <loguru.hpp>

#include <array>
#include <exception>
#include <utility>

namespace Pelgar::ORBE {

namespace {

constexpr std::uint8_t eeprom_bytes_compared = 16;
constexpr std::array<std::uint8_t, 2> register_patterns{0x55, 0xAA};

} // namespace

bool ORBE_Controller_Library::skips_bist(const char* name) const {
    if (m_simulation_mode) {
        LOG_F(INFO, "%s succeeds without a test in simulation mode", name);
    }
    return m_simulation_mode;
}

bool ORBE_Controller_Library::run_on_port(const char* name, unsigned port,
                                          const std::function<bool()>& operation) {
    try {
        if (!m_simulation_mode) {
            assign_uart(port);
        }
        return operation();
    } catch (const std::exception& exception) {
        LOG_F(ERROR, "Exception caught during %s : %s", name, exception.what());
        return false;
    }
}

bool ORBE_Controller_Library::set_bist_signal_mode(unsigned port, bool enable) {
    LOG_SCOPE_F(INFO, "set_bist_signal_mode");
    return run_on_port("set_bist_signal_mode", port, [&] {
        NP_Probe_Control_Module& control = probe_control(port);
        return (enable ? control.bist_pixel() : control.bist_end()) == 0;
    });
}

bool ORBE_Controller_Library::bist_start_PBRS(unsigned port) {
    LOG_SCOPE_F(INFO, "bist_start_PBRS");
    return run_on_port("bist_start_PBRS", port, [&] {
        probe_control(port).config().start_prbs_test();
        return true;
    });
}

bool ORBE_Controller_Library::bist_stop_PBRS(unsigned port, int* errors) {
    LOG_SCOPE_F(INFO, "bist_stop_PBRS");
    return run_on_port("bist_stop_PBRS", port, [&] {
        const std::uint32_t count = probe_control(port).config().stop_prbs_test();
        if (errors != nullptr) {
            *errors = static_cast<int>(count);
        }
        return true;
    });
}

bool ORBE_Controller_Library::bist_Probe_SR(unsigned port) {
    LOG_SCOPE_F(INFO, "bist_Probe_SR");
    return run_on_port("bist_Probe_SR", port, [&] {
        probe_control(port).config().upload_configuration(true);
        return true;
    });
}

bool ORBE_Controller_Library::bist_Eeproms(unsigned port) {
    LOG_SCOPE_F(INFO, "bist_Eeproms");
    if (skips_bist("bist_Eeproms")) {
        return true;
    }
    return run_on_port("bist_Eeproms", port, [&] {
        NP_Probe_Config_Module& config = probe_control(port).config();
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

bool ORBE_Controller_Library::bist_IIC(unsigned port) {
    LOG_SCOPE_F(INFO, "bist_IIC");
    if (skips_bist("bist_IIC")) {
        return true;
    }
    return run_on_port("bist_IIC", port, [&] {
        I2C_Over_GSML_Module& link = probe_link();
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

bool ORBE_Controller_Library::bist_HB(unsigned port) {
    LOG_SCOPE_F(INFO, "bist_HB");
    if (skips_bist("bist_HB")) {
        return true;
    }
    return run_on_port("bist_HB", port, [&] {
        const bool locked =
            (((m_controller->np_status_gpio().read_data() & np_port_mask()) >> port) & 1U) != 0;
        if (!locked) {
            LOG_F(ERROR, "the link of port %d is not locked", port);
        }
        return locked;
    });
}

bool ORBE_Controller_Library::run_with_stream(const char* name, unsigned port,
                                              const std::function<bool()>& operation) {
    if (m_streams_enabled) {
        LOG_F(ERROR, "%s needs the stream, which is in use", name);
        return false;
    }
    return run_on_port(name, port, operation);
}

bool ORBE_Controller_Library::bist_PSB(unsigned port) {
    LOG_SCOPE_F(INFO, "bist_PSB");
    return run_with_stream("bist_PSB", port,
                           [&] { return execute_psb_test(*this, port, m_self_test_directory); });
}

bool ORBE_Controller_Library::bist_Signal(unsigned port) {
    LOG_SCOPE_F(INFO, "bist_Signal");
    return run_with_stream("bist_Signal", port,
                           [&] { return execute_bist_signal_test(*this, port, m_self_test_directory); });
}

void ORBE_Controller_Library::set_self_test_directory(std::string directory) {
    m_self_test_directory = std::move(directory);
}

} // namespace Pelgar::ORBE
