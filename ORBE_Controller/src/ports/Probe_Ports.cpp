#include "ports/Probe_Ports.h"

#include "common/Checked_Index.h"
#include "connection/Box_Connection.h"

#include <loguru.hpp>

#include <algorithm>
#include <exception>
#include <limits>
#include <stdexcept>

namespace Pelgar::ORBE {

namespace {

constexpr const char* not_made = "probe port is not initialised";

} // namespace

void Probe_Ports::make() {
    m_i2c = std::make_unique<I2C_Over_GSML_Module>(&m_box.modules().uart());
    for (Probe_Port& port : m_ports) {
        port.renew(m_i2c.get());
    }
}

void Probe_Ports::follow_connection() {
    if (m_i2c) {
        m_i2c->use_uart(&m_box.modules().uart());
    }
}

Probe_Port& Probe_Ports::at(unsigned port) {
    if (!is_made(port)) {
        throw std::runtime_error(not_made);
    }
    return m_ports[port];
}

bool Probe_Ports::is_made(unsigned port) const {
    return checked_at(m_ports, port).is_made();
}

I2C_Over_GSML_Module& Probe_Ports::link() {
    if (!m_i2c) {
        throw std::runtime_error(not_made);
    }
    return *m_i2c;
}

void Probe_Ports::assign_uart(unsigned port) {
    const unsigned channel = std::min<unsigned>(port, std::numeric_limits<unsigned char>::max());
    m_box.modules().configurator().assign_uart_to_np_channel(static_cast<unsigned char>(channel));
}

bool Probe_Ports::run_on_port(const char* name, unsigned port, const std::function<bool()>& operation) {
    try {
        if (!m_box.is_simulation()) {
            assign_uart(port);
        }
        return operation();
    } catch (const std::exception& exception) {
        LOG_F(ERROR, "Exception caught during %s : %s", name, exception.what());
        return false;
    }
}

} // namespace Pelgar::ORBE
