// Layer: device controller. The four probe ports of a box, the one link that leads to their headstages, and
// its routing. Called on the host's threads; the box has one UART for all ports, so that calls must not
// overlap.
#pragma once

#include "ports/Probe_Port.h"
#include "probe_link/M_I2C_Over_GSML.h"
#include "wire/Mux_Row_Format.h"

#include <array>
#include <cstddef>
#include <functional>
#include <memory>

namespace Pelgar::ORBE {

class Box_Connection;

inline constexpr std::size_t probe_port_count = demux::np_port_count;

class Probe_Ports {
public:
    // `box` must outlive the object. There is no link and no port yet.
    explicit Probe_Ports(const Box_Connection& box) : m_box(box) {}

    // Makes the link and the ports, one by one, in place of earlier ones.
    void make();

    // To be called when the connection has been opened anew, which may have brought a UART of its own. What
    // the ports are configured to stays.
    void follow_connection();

    // Port index 0..3: throws std::out_of_range("invalid array<T, N> subscript") for another one, and
    // std::runtime_error before `make`.
    Probe_Port& at(unsigned port);

    // Whether a port (index as for `at`) is there to be used.
    bool is_made(unsigned port) const;

    // The link to the headstages. Throws std::runtime_error before `make`.
    I2C_Over_GSML_Module& link();

    // Routes the link to a port.
    void assign_uart(unsigned port);

    // Runs an operation on a port to which the link is routed first (in simulation mode there is nothing to
    // route); an exception is logged under the operation's name and fails it.
    bool run_on_port(const char* name, unsigned port, const std::function<bool()>& operation);

private:
    const Box_Connection& m_box;
    std::unique_ptr<I2C_Over_GSML_Module> m_i2c;
    std::array<Probe_Port, probe_port_count> m_ports;
};

} // namespace Pelgar::ORBE
