#include "streaming/DMA_Pump.h"

#include "common/Console.h"
#include "connection/Box_Connection.h"
#include "streaming/Demux_Entrance.h"

#include <loguru.hpp>

#include <algorithm>
#include <exception>

namespace Pelgar::ORBE {

void DMA_Pump::set_transfer_size(std::uint32_t bytes) {
    m_page_aligned_recv_buffer_size = std::min<std::uint32_t>(bytes, demux::transfer_buffer_capacity);
}

void DMA_Pump::allocate_receive_buffer() {
    LOG_F(INFO, "m_page_aligned_recv_buffer_size = %d", m_page_aligned_recv_buffer_size);
    m_xfer_buffer = std::make_unique_for_overwrite<demux::Main_mux_transfer_buffer_wrapper>();
}

void DMA_Pump::prepare() {
    m_box.modules().data_stream().prepare_buffer_for_hw_read(m_xfer_buffer->data,
                                                             m_page_aligned_recv_buffer_size);
    m_registered = m_xfer_buffer->data;
    m_prepared = true;
}

bool DMA_Pump::pump() {
    try {
        M_DataStream& stream = m_box.modules().data_stream();
        // Whatever went wrong before: the driver never gets a transfer that is queued already.
        if (m_registered != m_xfer_buffer->data) {
            stream.exchange_buffer(m_xfer_buffer->data, m_page_aligned_recv_buffer_size);
            m_registered = m_xfer_buffer->data;
        }
        const unsigned count = stream.read(m_xfer_buffer->data, m_page_aligned_recv_buffer_size, true);
        if (count != m_page_aligned_recv_buffer_size) {
            console::out("R:", count, " byte read from device\n");
        }
        if (++m_pump_print_counter == 0) {
            console::out("A:", count, " byte read from device\n");
        }
        const std::uint32_t valid = std::min<std::uint32_t>(count, m_page_aligned_recv_buffer_size);
        if (valid > 0) {
            m_xfer_buffer->size = valid;
            m_demux.exchange_xfer_buffer(m_xfer_buffer);
        }
        ++m_read_counter;
        m_total_bytes_read.fetch_add(valid);
        return true;
    } catch (const std::exception& exception) {
        LOG_F(WARNING, "pump_hw_data_to_demux exception catched : %s", exception.what());
        m_box.raise_error_level(Error_Level::dma_pump);
        return false;
    }
}

void DMA_Pump::purge_read_buffers() {
    if (!m_xfer_buffer) {
        return;
    }
    if (!m_box.is_healthy()) {
        LOG_F(INFO, "m_current_error_level != 0");
    }
    try {
        const unsigned count =
            m_box.modules().data_stream().read(m_xfer_buffer->data, m_page_aligned_recv_buffer_size, false);
        LOG_F(INFO, " %d bytes purged", count);
    } catch (const std::exception& exception) {
        LOG_F(WARNING, "purge_read_buffers exception catched : %s", exception.what());
    }
    m_prepared = false;
    m_xfer_buffer.reset();
}

} // namespace Pelgar::ORBE
