#include "controller/C_ORBE_Controller_Library.h"

#include "common/Waiting.h"
#include "fpga/FPGA_Identity.h"
#include "resources/Resource_Directory.h"

#include <loguru.hpp>

#include <array>
#include <chrono>
#include <cstdio>
#include <exception>
#include <utility>

namespace Pelgar::ORBE {

namespace {

using namespace std::chrono_literals;

constexpr int pll_lock_attempts = 5;
constexpr auto pll_lock_retry_wait = 1000ms;
constexpr auto fpga_reboot_wait = 10s;

template <typename... Arguments>
std::string format(const char* pattern, Arguments... arguments) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), pattern, arguments...);
    return text.data();
}

} // namespace

ORBE_Controller_Library::ORBE_Controller_Library(bool simulation)
    : m_simulation_mode(simulation), m_self_test_directory(default_resource_directory()) {
    m_controller = A_ORBE_Controller::get_instance(simulation);
    log_mode();
}

ORBE_Controller_Library::ORBE_Controller_Library(std::shared_ptr<A_ORBE_Controller> controller,
                                                 bool simulation)
    : m_controller(std::move(controller)), m_simulation_mode(simulation),
      m_self_test_directory(default_resource_directory()) {
    log_mode();
}

ORBE_Controller_Library::~ORBE_Controller_Library() {
    LOG_F(INFO, "ORBE_Controller_Library dtor");
    try {
        finalize_stream();
    } catch (const std::exception& exception) {
        LOG_F(ERROR, "finalize_stream failed : %s", exception.what());
    }
}

void ORBE_Controller_Library::log_mode() const {
    LOG_F(INFO, "ORBE_Controller_Library ctor. (%s)", m_simulation_mode ? "Simulation mode" : "HW mode");
}

bool ORBE_Controller_Library::open() {
    LOG_SCOPE_F(INFO, "open");
    bool opened = false;
    try {
        opened = m_controller->open_driver_connection("ORBE_Dext_Driver", true);
    } catch (...) {
        // Without a mapped register space nothing may touch the streams' registers any more.
        set_error_level(Error_Level::driver_open);
        throw;
    }
    // The connection may have brought a UART of its own. What the probes are configured to outlives it.
    if (m_i2c) {
        m_i2c->use_uart(&m_controller->uart());
    }
    if (!opened) {
        LOG_F(ERROR, "Open driver failed");
        set_error_level(Error_Level::driver_open);
    }
    return opened;
}

bool ORBE_Controller_Library::check_and_switch_firmware_if_nec(bool switch_allowed) {
    LOG_SCOPE_F(INFO, "check_and_switch_firmware_if_nec");
    if (m_simulation_mode) {
        LOG_F(INFO, "check_and_switch_firmware_if_nec skipped because of simulation mode");
        return true;
    }
    const std::uint32_t signature = m_controller->np_status_gpio().read_second_data();
    LOG_F(INFO, "FPGA digital_design_signature : %08x\n", signature);
    if (design_id(signature) == neuropixels_design_id) {
        LOG_F(INFO, "digital_design_id matched");
        return true;
    }
    if (!switch_allowed) {
        LOG_F(INFO, "digital_design_id not matched");
        return false;
    }
    LOG_F(INFO, "Switching FPGA design");
    m_controller->foreign_hw_icap().boot(neuropixels_design_flash_address);
    m_controller->close_driver_connection();
    LOG_F(INFO, "Waiting for reboot of the FPGA");
    wait_for(fpga_reboot_wait);
    LOG_F(INFO, "Wait end");
    return open();
}

bool ORBE_Controller_Library::icap_boot(unsigned address) {
    LOG_SCOPE_F(INFO, "icap_boot");
    return m_controller->hw_icap().boot(address);
}

bool ORBE_Controller_Library::pre_init(bool one_mode) {
    LOG_SCOPE_F(INFO, "pre_init");
    LOG_F(INFO, "ORBE_Controller_Library::pre_init(), simulation = %d", m_simulation_mode);
    if (m_simulation_mode) {
        m_np_port_pll_status = 0x1;
        m_np_port_count_parameter_from_fpga = 2;
        LOG_F(INFO, "Simulating pll status : %x", m_np_port_pll_status);
    } else {
        log_fpga_identity();
        ORBE_Configurator& configurator = m_controller->configurator();
        configurator.reset_configuration();
        configurator.set_one_mode(one_mode);
        configurator.set_VLM004_power(true);
        configurator.assign_port_4_to_np(true);
        if (!check_np_ports_status()) {
            LOG_F(WARNING, "check_np_ports_status failed check connector connections");
            return false;
        }
    }

    m_i2c = std::make_unique<I2C_Over_GSML_Module>(&m_controller->uart());
    for (std::size_t port = 0; port < port_count; ++port) {
        m_np_probe_control[port] = std::make_unique<NP_Probe_Control_Module>(m_i2c.get());
        m_gain_filters[port] = std::make_shared<C_L2_CH_Gain_Fix_Filter>();
    }
    return true;
}

void ORBE_Controller_Library::log_fpga_identity() {
    const Build_Date date = build_date_of(m_controller->build_timestamp_gpio().read_data());
    LOG_F(INFO, "FPGA design build timestamp : %02d-%02d-%04d\n", date.day, date.month, date.year);
    const std::uint32_t signature = m_controller->np_status_gpio().read_second_data();
    LOG_F(INFO, "FPGA digital_design_signature : %08x\n", signature);
    m_np_port_count_parameter_from_fpga = np_port_count_of(signature);
    LOG_F(INFO, "NP port_count_parameter_from_fpga : %d\n", m_np_port_count_parameter_from_fpga);
    LOG_F(INFO, "FPGA efuse_usr : %08x\n", get_fpga_efuse());
    LOG_F(INFO, "FPGA temperature : %.2f\n", static_cast<double>(get_fpga_temperature()));
}

bool ORBE_Controller_Library::check_np_ports_status() {
    LOG_SCOPE_F(INFO, "check_np_ports_status");
    LOG_F(INFO, "Available NP port count from FPGA : %d", m_np_port_count_parameter_from_fpga);
    const std::uint8_t mask = np_port_mask();
    for (int attempt = 0; attempt < pll_lock_attempts; ++attempt) {
        const std::uint32_t locks = m_controller->np_status_gpio().read_data();
        m_np_port_pll_status = static_cast<std::uint8_t>(locks & mask);
        LOG_F(INFO, "Masked pll status : %x", m_np_port_pll_status);
        ORBE_Configurator::print_np_ports_status(m_np_port_pll_status);
        if (m_np_port_pll_status != 0) {
            LOG_F(INFO, "At least one NP Port PLL lock");
            break;
        }
        LOG_F(INFO, "Waiting for NP Port PLL lock");
        wait_for(pll_lock_retry_wait);
    }
    return m_np_port_pll_status != 0;
}

std::uint8_t ORBE_Controller_Library::np_port_mask() const {
    const unsigned count = m_np_port_count_parameter_from_fpga;
    if (count < 1 || count > port_count) {
        LOG_F(ERROR, "Invalid m_np_port_count_parameter_from_fpga");
        return 0;
    }
    return static_cast<std::uint8_t>((1U << count) - 1U);
}

std::string ORBE_Controller_Library::get_design_identifier_from_fpga() {
    return format("%08x", m_controller->np_status_gpio().read_second_data());
}

std::string ORBE_Controller_Library::get_design_build_date() {
    const Build_Date date = build_date_of(m_controller->build_timestamp_gpio().read_data());
    return format("%02u-%02u-%04u", date.day, date.month, date.year);
}

std::string ORBE_Controller_Library::get_library_version() const {
    return "1.0";
}

float ORBE_Controller_Library::get_fpga_temperature() const {
    return m_controller->xadc().get_temperature();
}

unsigned ORBE_Controller_Library::get_fpga_efuse() const {
    return m_controller->efuse_gpio().read_data();
}

unsigned char ORBE_Controller_Library::get_np_port_count_from_fpga_signature() const {
    return m_np_port_count_parameter_from_fpga;
}

unsigned char ORBE_Controller_Library::get_cached_np_port_status() const {
    return m_np_port_pll_status;
}

bool ORBE_Controller_Library::is_in_simulation_mode() const {
    return m_simulation_mode;
}

Error_Level ORBE_Controller_Library::get_current_error_level() const {
    return m_current_error_level;
}

void ORBE_Controller_Library::set_error_level(Error_Level level) {
    m_current_error_level = level;
}

bool ORBE_Controller_Library::is_healthy() const {
    return m_current_error_level == Error_Level::healthy;
}

} // namespace Pelgar::ORBE
