#include "connection/Box_Connection.h"

#include <loguru.hpp>

#include <stdexcept>
#include <utility>

namespace Pelgar::ORBE {

void Box_Connection::attach(std::shared_ptr<A_ORBE_Controller> back_end) {
    m_controller = std::move(back_end);
}

bool Box_Connection::open() {
    bool opened = false;
    m_is_open = false;
    try {
        opened = m_controller->open_driver_connection("ORBE_Dext_Driver", true);
    } catch (...) {
        // Without a mapped register space nothing may touch the streams' registers any more.
        raise_error_level(Error_Level::driver_open);
        throw;
    }
    if (!opened) {
        LOG_F(ERROR, "Open driver failed");
        if (!m_controller->open_failure().empty()) {
            LOG_F(ERROR, "%s", m_controller->open_failure().c_str());
        }
        raise_error_level(Error_Level::driver_open);
    }
    m_is_open = opened;
    return opened;
}

void Box_Connection::close() {
    m_is_open = false;
    m_controller->close_driver_connection();
}

A_ORBE_Controller& Box_Connection::modules() const {
    if (!m_is_open && !m_simulation_mode) {
        throw std::runtime_error("the box is not open");
    }
    return *m_controller;
}

} // namespace Pelgar::ORBE
