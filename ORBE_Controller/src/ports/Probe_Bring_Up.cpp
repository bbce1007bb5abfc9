#include "ports/Probe_Bring_Up.h"

#include "common/Console.h"
#include "connection/Box_Connection.h"
#include "ports/Probe_Ports.h"
#include "probe_link/NP_Probe_Registers.h"

#include <loguru.hpp>

#include <cstdint>
#include <exception>

namespace Pelgar::ORBE {

bool Probe_Bring_Up::probe_init_part_1(unsigned port) {
    LOG_SCOPE_F(INFO, "probe_init_part_1");
    LOG_F(INFO, "ORBE_Controller_Library::probe_init_part_1() np_port_id : %d", port);
    if (port >= probe_port_count) {
        console::out("ORBE_Controller_Library::init invalid port id parameter\n");
        return false;
    }
    if (m_box.is_simulation()) {
        console::out("skipping init for simulation mode\n");
        return true;
    }
    try {
        return check_link(port);
    } catch (const std::exception& exception) {
        LOG_F(ERROR, "Exception caught while probe probe_init_part_1 : %s", exception.what());
        m_box.raise_error_level(Error_Level::probe_link);
        return false;
    }
}

bool Probe_Bring_Up::check_link(unsigned port) {
    m_ports.assign_uart(port);
    I2C_Over_GSML_Module& link = m_ports.link();
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
}

bool Probe_Bring_Up::probe_init_part_2(unsigned port, E_ORBE_Init_Config init_config) {
    LOG_SCOPE_F(INFO, "probe_init_part_2");
    LOG_F(INFO, "ORBE_Controller_Library::probe_init_part_2() np_port_id : %d, init_config : %d", port,
          static_cast<int>(init_config));
    if (port >= probe_port_count) {
        console::out("ORBE_Controller_Library::init invalid port id parameter\n");
        return false;
    }
    m_ports.assign_uart(port);
    const bool initialised = np_control_init(port, init_config);
    if (!initialised) {
        LOG_F(ERROR, "probe_init_part_2 failed");
    }
    return initialised;
}

bool Probe_Bring_Up::np_control_init(unsigned port, E_ORBE_Init_Config init_config) {
    LOG_SCOPE_F(INFO, "np_control_init");
    try {
        NP_Probe_Control_Module& control = m_ports.at(port).control();
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
        m_box.raise_error_level(Error_Level::probe_link);
        return false;
    }
}

bool Probe_Bring_Up::writeProbeConfiguration(unsigned port, bool readcheck) {
    LOG_SCOPE_F(INFO, "writeProbeConfiguration");
    if (port >= probe_port_count) {
        LOG_F(ERROR, "Invalid argument at writeProbeConfiguration");
        return false;
    }
    try {
        m_ports.assign_uart(port);
        m_ports.at(port).config().upload_configuration(readcheck);
    } catch (const std::exception& exception) {
        LOG_F(ERROR, "Exception caught during probe configuration load : %s", exception.what());
        return false;
    }
    if (m_box.is_simulation()) {
        console::out("emulating 2 second init (ORBE_Controller_Library::writeProbeConfiguration)\n");
    }
    return true;
}

} // namespace Pelgar::ORBE
