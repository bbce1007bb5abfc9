// Layer: device controller. The demultiplexer and the thread that runs it. Started and stopped on the host's
// threads; stopping polls once a second until everything that was pushed has been delivered.
#pragma once

#include "rows/C_Async_PSB_And_RHD_Demux.h"

#include <thread>

namespace Pelgar::ORBE {

class Demux_Thread {
public:
    demux::Async_NP_And_RHD_Demux& demux() { return m_demux; }

    const demux::Async_NP_And_RHD_Demux& demux() const { return m_demux; }

    // Starts the workers and the thread, also anew after `stop`. Throws std::system_error when a thread
    // cannot be started. Starting a second time without stopping ends the process.
    void start();

    // Ends and joins all of them; logs when there is nothing to end. Must have been called before the object
    // ends.
    void stop();

    // Blocks until what was pushed so far has reached its listeners; at once when the thread does not run.
    void wait_until_delivered();

private:
    void run();

    demux::Async_NP_And_RHD_Demux m_demux;
    std::thread m_main_demux_thread;
    bool m_main_demux_thread_started = false;
};

} // namespace Pelgar::ORBE
