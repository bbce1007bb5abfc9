#include "streaming/Saved_Listeners.h"

#include "common/Console.h"
#include "rows/C_Async_PSB_And_RHD_Demux.h"

namespace Pelgar::ORBE {

void Saved_Listeners::save(const demux::Async_NP_And_RHD_Demux& demux) {
    console::out("Saving stream listeners\n");
    for (unsigned port = 0; port < demux::np_port_count; ++port) {
        m_saved_np_listeners[port] = demux.get_L2_CH_Results_Listener(port);
    }
    m_saved_rhd_listener = demux.get_RHD_Results_Listener();
}

void Saved_Listeners::restore(demux::Async_NP_And_RHD_Demux& demux) const {
    console::out("Restoring stream listeners\n");
    for (unsigned port = 0; port < demux::np_port_count; ++port) {
        demux.set_L2_CH_Results_Listener(m_saved_np_listeners[port], port);
    }
    demux.set_RHD_Results_Listener(m_saved_rhd_listener);
}

} // namespace Pelgar::ORBE
