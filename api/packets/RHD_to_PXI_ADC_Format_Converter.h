// Layer: façade. Turns each RHD frame into one packet of auxiliary ADC samples and TTL status. Published to
// on the RHD worker thread; the host's threads read.
#pragma once

#include "packets/C_MT_RHD_PXI_Queue.h"
#include "rhd/I_RHD_Frame_Listener.h"

#include <cstddef>
#include <cstdint>
#include <mutex>

namespace Pelgar::ORBE::npoe_adapter {

class RHD_to_PXI_ADC_Format_Converter : public demux::I_RHD_Frame_Listener {
public:
    RHD_to_PXI_ADC_Format_Converter();

    void publish_rhd_frame(demux::RHD_Frame& frame) override;

    // In a burst a reader is woken once for many packets.
    void burst_begins() override;
    void burst_ends() override;

    // Takes one record: twelve int16 to `dst` and the status; either may be null and is then skipped. Blocks
    // while there is none; writes nothing once the queue is signalled for exit. A reader says
    // how many records it is about to take, as with `Block_Queue::wait_front_or_exit`.

    void read_sample_packet_to_buffer(std::int16_t* dst, std::uint16_t* status,
                                      std::size_t wanted = Block_Queue<ADC_Packet_Record>::one_by_one);

    MT_RHD_PXI_Queue& queue() { return m_queue; }

    // Held by a host thread for as long as it takes packets, so that each packet goes to one reader.
    std::mutex& reader_mutex() { return m_reader_mutex; }

private:
    MT_RHD_PXI_Queue m_queue;
    std::mutex m_reader_mutex;
};

} // namespace Pelgar::ORBE::npoe_adapter
