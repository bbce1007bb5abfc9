#include "ports/NP_Port_Locks.h"

#include "common/Waiting.h"
#include "connection/Box_Connection.h"
#include "fpga/FPGA_Identity.h"
#include "wire/Mux_Row_Format.h"

#include <loguru.hpp>

#include <chrono>

namespace Pelgar::ORBE {

namespace {

using namespace std::chrono_literals;

constexpr int pll_lock_attempts = 5;
constexpr auto pll_lock_retry_wait = 1000ms;

} // namespace

void NP_Port_Locks::set_port_count_from_signature(std::uint32_t signature) {
    m_np_port_count_parameter_from_fpga = np_port_count_of(signature);
    LOG_F(INFO, "NP port_count_parameter_from_fpga : %d\n", m_np_port_count_parameter_from_fpga);
}

void NP_Port_Locks::simulate() {
    m_np_port_pll_status = 0x1;
    m_np_port_count_parameter_from_fpga = 2;
    LOG_F(INFO, "Simulating pll status : %x", m_np_port_pll_status);
}

bool NP_Port_Locks::check_np_ports_status() {
    LOG_SCOPE_F(INFO, "check_np_ports_status");
    LOG_F(INFO, "Available NP port count from FPGA : %d", m_np_port_count_parameter_from_fpga);
    const std::uint8_t mask = port_mask();
    for (int attempt = 0; attempt < pll_lock_attempts; ++attempt) {
        const std::uint32_t locks = m_box.modules().np_status_gpio().read_data();
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

std::uint8_t NP_Port_Locks::status_now() const {
    return static_cast<std::uint8_t>(m_box.modules().np_status_gpio().read_data() & port_mask());
}

std::uint8_t NP_Port_Locks::port_mask() const {
    const unsigned count = m_np_port_count_parameter_from_fpga;
    if (count < 1 || count > demux::np_port_count) {
        LOG_F(ERROR, "Invalid m_np_port_count_parameter_from_fpga");
        return 0;
    }
    return static_cast<std::uint8_t>((1U << count) - 1U);
}

} // namespace Pelgar::ORBE
