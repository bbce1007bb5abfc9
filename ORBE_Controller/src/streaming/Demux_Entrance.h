// Layer: device controller. What both pumps push their transfers into: the demultiplexer and, where there is
// one, the raw capture. On the pump thread; never blocks for long.
#pragma once

#include "raw_capture/Raw_Capture.h"
#include "rows/C_Async_PSB_And_RHD_Demux.h"
#include "wire/Main_mux_transfer_buffer_wrapper.h"

#include <memory>

namespace Pelgar::ORBE {

class Demux_Entrance {
public:
    // Must outlive the object.
    explicit Demux_Entrance(demux::Async_NP_And_RHD_Demux& demux) : m_demux(demux) {}

    // Not while a pump runs; null: none. Must outlive what is pumped.
    void set_capture(Raw_Capture* capture) { m_capture = capture; }

    void exchange_xfer_buffer(std::unique_ptr<demux::Main_mux_transfer_buffer_wrapper>& buffer) {
        if (m_capture != nullptr) {
            m_capture->take({buffer->data, buffer->size});
        }
        m_demux.exchange_xfer_buffer(buffer);
    }

private:
    demux::Async_NP_And_RHD_Demux& m_demux;
    Raw_Capture* m_capture = nullptr;
};

} // namespace Pelgar::ORBE
