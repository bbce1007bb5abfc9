#include "connection/Box_Connection.h"

#include <loguru.hpp>

#include <utility>

namespace Pelgar::ORBE {

void Box_Connection::attach(std::shared_ptr<A_ORBE_Controller> back_end) {
    m_controller = std::move(back_end);
}

bool Box_Connection::open() {
    bool opened = false;
    try {
        opened = m_controller->open_driver_connection("ORBE_Dext_Driver", true);
    } catch (...) {
        // Without a mapped register space nothing may touch the streams' registers any more.
        raise_error_level(Error_Level::driver_open);
        throw;
    }
    if (!opened) {
        LOG_F(ERROR, "Open driver failed");
        raise_error_level(Error_Level::driver_open);
    }
    return opened;
}

void Box_Connection::close() {
    m_controller->close_driver_connection();
}

} // namespace Pelgar::ORBE
