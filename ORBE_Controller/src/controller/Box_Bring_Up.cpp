#include "controller/Box_Bring_Up.h"

#include "common/Waiting.h"
#include "connection/Box_Connection.h"
#include "flash/Configuration_Flash.h"
#include "fpga/FPGA_Identity.h"
#include "ports/Probe_Ports.h"

#include <loguru.hpp>

#include <array>
#include <chrono>
#include <cstdio>

namespace Pelgar::ORBE {

namespace {

using namespace std::chrono_literals;

constexpr auto fpga_reboot_wait = 10s;

template <typename... Arguments>
std::string format(const char* pattern, Arguments... arguments) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), pattern, arguments...);
    return text.data();
}

} // namespace

bool Box_Bring_Up::open() {
    LOG_SCOPE_F(INFO, "open");
    const bool opened = m_box.open();
    if (opened) {
        m_ports.follow_connection();
    }
    return opened;
}

bool Box_Bring_Up::check_and_switch_firmware_if_nec(bool switch_allowed) {
    LOG_SCOPE_F(INFO, "check_and_switch_firmware_if_nec");
    if (m_box.is_simulation()) {
        LOG_F(INFO, "check_and_switch_firmware_if_nec skipped because of simulation mode");
        return true;
    }
    const std::uint32_t word = signature();
    LOG_F(INFO, "FPGA digital_design_signature : %08x\n", word);
    if (design_id(word) == neuropixels_design_id) {
        LOG_F(INFO, "digital_design_id matched");
        return true;
    }
    if (!switch_allowed) {
        LOG_F(INFO, "digital_design_id not matched");
        return false;
    }
    LOG_F(INFO, "Switching FPGA design");
    m_box.modules().foreign_hw_icap().boot(configuration_flash::neuropixels_design_address);
    m_box.close();
    LOG_F(INFO, "Waiting for reboot of the FPGA");
    wait_for(fpga_reboot_wait);
    LOG_F(INFO, "Wait end");
    return open();
}

bool Box_Bring_Up::icap_boot(unsigned address) {
    LOG_SCOPE_F(INFO, "icap_boot");
    return m_box.modules().hw_icap().boot(address);
}

bool Box_Bring_Up::pre_init(bool one_mode) {
    LOG_SCOPE_F(INFO, "pre_init");
    LOG_F(INFO, "ORBE_Controller_Library::pre_init(), simulation = %d", m_box.is_simulation());
    if (m_box.is_simulation()) {
        m_locks.simulate();
    } else {
        log_fpga_identity();
        ORBE_Configurator& configurator = m_box.modules().configurator();
        configurator.reset_configuration();
        configurator.set_one_mode(one_mode);
        configurator.set_VLM004_power(true);
        configurator.assign_port_4_to_np(true);
        if (!m_locks.check_np_ports_status()) {
            LOG_F(WARNING, "check_np_ports_status failed check connector connections");
            return false;
        }
    }
    m_ports.make();
    return true;
}

void Box_Bring_Up::log_fpga_identity() {
    const Build_Date date = build_date_of(m_box.modules().build_timestamp_gpio().read_data());
    LOG_F(INFO, "FPGA design build timestamp : %02d-%02d-%04d\n", date.day, date.month, date.year);
    const std::uint32_t word = signature();
    LOG_F(INFO, "FPGA digital_design_signature : %08x\n", word);
    m_locks.set_port_count_from_signature(word);
    LOG_F(INFO, "FPGA efuse_usr : %08x\n", get_fpga_efuse());
    LOG_F(INFO, "FPGA temperature : %.2f\n", static_cast<double>(get_fpga_temperature()));
}

std::uint32_t Box_Bring_Up::signature() const {
    return m_box.modules().np_status_gpio().read_second_data();
}

std::string Box_Bring_Up::get_design_identifier_from_fpga() const {
    return format("%08x", signature());
}

std::string Box_Bring_Up::get_design_build_date() const {
    const Build_Date date = build_date_of(m_box.modules().build_timestamp_gpio().read_data());
    return format("%02u-%02u-%04u", date.day, date.month, date.year);
}

float Box_Bring_Up::get_fpga_temperature() const {
    return m_box.modules().xadc().get_temperature();
}

std::uint32_t Box_Bring_Up::get_fpga_efuse() const {
    return m_box.modules().efuse_gpio().read_data();
}

} // namespace Pelgar::ORBE
