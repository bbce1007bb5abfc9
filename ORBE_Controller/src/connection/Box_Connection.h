// Layer: device controller. The connection to one box as the controller's parts share it: the back-end's
// modules, whether it leads to a box or plays one, and how it fares. Opened and closed on the host's threads;
// the error level is set and asked on any thread.
#pragma once

#include "common/Relaxed.h"
#include "connection/A_ORBE_Controller.h"

#include <cstdint>
#include <memory>

namespace Pelgar::ORBE {

// What `m_current_error_level` holds. Above `healthy` the streams' registers are left alone.
enum class Error_Level : std::int32_t { healthy = 0, probe_link = 1, driver_open = 2, dma_pump = 3 };

class Box_Connection {
public:
    explicit Box_Connection(bool simulation) : m_simulation_mode(simulation) {}

    // Gives it the back-end, without which it is of no use. Touches no hardware.
    void attach(std::shared_ptr<A_ORBE_Controller> back_end);

    // False, and the error level, tell that there is no usable box. Exceptions of the back-end raise the
    // level and pass through.
    bool open();
    void close();

    // The back-end with its modules, of which every one uses the box's registers. Throws
    // std::runtime_error("the box is not open") while there are none: this is the one place that keeps the
    // registers from being used without a connection. In simulation mode they are always there.
    A_ORBE_Controller& modules() const;

    bool is_simulation() const { return m_simulation_mode; }

    Error_Level error_level() const { return m_current_error_level; }

    void raise_error_level(Error_Level level) { m_current_error_level = level; }

    bool is_healthy() const { return error_level() == Error_Level::healthy; }

private:
    std::shared_ptr<A_ORBE_Controller> m_controller;
    bool m_simulation_mode;
    Relaxed<bool> m_is_open{false};
    Relaxed<Error_Level> m_current_error_level{Error_Level::healthy};
};

} // namespace Pelgar::ORBE
