// Layer: device controller. Keeps the demultiplexer's listeners while others take their places. Called on the
// host's threads; never blocks.
#pragma once

#include "probe/I_L2_Demux_CH_Results.h"
#include "rhd/I_RHD_Frame_Listener.h"
#include "wire/Mux_Row_Format.h"

#include <array>
#include <memory>

namespace Pelgar::ORBE {

namespace demux {
class Async_NP_And_RHD_Demux;
}

class Saved_Listeners {
public:
    void save(const demux::Async_NP_And_RHD_Demux& demux);
    void restore(demux::Async_NP_And_RHD_Demux& demux) const;

private:
    std::array<std::weak_ptr<demux::I_L2_Demux_CH_Results>, demux::np_port_count> m_saved_np_listeners;
    std::weak_ptr<demux::I_RHD_Frame_Listener> m_saved_rhd_listener;
};

} // namespace Pelgar::ORBE
