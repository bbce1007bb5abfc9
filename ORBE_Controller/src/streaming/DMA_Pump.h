// Layer: device controller. Moves the box's DMA stream into the demultiplexer, one buffer a call. Prepared on
// the host's threads; the pump thread pumps and blocks in the driver's read.
#pragma once

#include "common/Relaxed.h"
#include "wire/Main_mux_transfer_buffer_wrapper.h"

#include <cstdint>
#include <memory>

namespace Pelgar::ORBE {

class Box_Connection;
class Demux_Entrance;

class DMA_Pump {
public:
    // Both must outlive the object.
    DMA_Pump(Box_Connection& box, Demux_Entrance& demux) : m_box(box), m_demux(demux) {}

    // The length of a transfer, at most and at first 1 MiB. Before the receive buffer is allocated.
    void set_transfer_size(std::uint32_t bytes);

    // The first allocates the first receive buffer, the second hands it to the driver; exceptions of the
    // back-end pass through. Both are needed before pumping.
    void allocate_receive_buffer();
    void prepare();

    bool is_prepared() const { return m_prepared; }

    // Reads into one buffer and queues it; the driver gets another one for it. False, and the error level,
    // when the read failed.
    bool pump();

    // Reads away what the driver still holds and releases the receive buffer. Not part of the normal end of a
    // stream: leaving the driver's buffers alone there is deliberate.
    void purge_read_buffers();

    // In bytes modulo 2^32, since construction. Any thread.
    std::uint32_t total_bytes_read() const { return m_total_bytes_read; }

    // Pumps that succeeded.
    std::uint32_t read_count() const { return m_read_counter; }

private:
    Box_Connection& m_box;
    Demux_Entrance& m_demux;
    std::uint32_t m_page_aligned_recv_buffer_size = demux::transfer_buffer_capacity;
    // What the driver fills, and the demultiplexer's queue then takes as it is.
    std::unique_ptr<demux::Main_mux_transfer_buffer_wrapper> m_xfer_buffer;
    bool m_prepared = false;
    const void* m_registered = nullptr; // what the driver fills
    Relaxed<std::uint32_t> m_total_bytes_read{0};
    std::uint32_t m_read_counter = 0;
    std::uint8_t m_pump_print_counter = 0;
};

} // namespace Pelgar::ORBE
