// Layer: façade. Packs the channel results of one probe port into electrode packets: twelve AP sets and the
// LFP set that closes them. Published to on the port's NP worker thread; the host's threads read the queue.
#pragma once

#include "NeuropixAPI.h"
#include "packets/C_MT_NP_PXI_Queue.h"
#include "probe/I_L2_Demux_CH_Results.h"

#include <cstdint>
#include <memory>
#include <mutex>

namespace Pelgar::ORBE::npoe_adapter {

class L2_CH_Results_NP_PXI_Format_Converter : public demux::I_L2_Demux_CH_Results {
public:
    L2_CH_Results_NP_PXI_Format_Converter();

    // Fills the next of the twelve AP rows and stamps it.
    void publish_ap_ch_data(std::uint16_t (&values)[demux::channel_count]) override;

    // Fills the LFP row, queues the packet and starts the next one at its first AP row. Rows that nothing is
    // published for keep the values of the packet before.
    void publish_lp_ch_data(std::uint16_t (&values)[demux::channel_count]) override;

    // In a burst a reader is woken once for many packets.
    void burst_begins() override;
    void burst_ends() override;

    // Packets completed since construction, dropped ones included. The publishing thread.
    std::uint32_t completed_packet_count() const { return m_lfp_count; }

    MT_NP_PXI_Queue& queue() { return m_queue; }

    // Held by a host thread for as long as it takes packets, so that each packet goes to one reader.
    std::mutex& reader_mutex() { return m_reader_mutex; }

private:
    void take_over_missing_rows();

    // The packet that is being filled, in memory that goes to the queue with it.
    std::unique_ptr<Neuropixels::electrodePacket> m_ep = std::make_unique<Neuropixels::electrodePacket>();
    // Rows from the first on that hold their values: all of the first packet's, which are 0.
    std::uint32_t m_rows_with_values = NP1_PROBE_SUPERFRAMESIZE;
    // The packet before, which the queue keeps as it is until it is given the next one.
    const Neuropixels::electrodePacket* m_previous = nullptr;
    std::uint32_t m_ap_index = 0;
    std::uint32_t m_lfp_count = 0;
    float m_time = 0.0F;
    MT_NP_PXI_Queue m_queue;
    std::mutex m_reader_mutex;
};

} // namespace Pelgar::ORBE::npoe_adapter
