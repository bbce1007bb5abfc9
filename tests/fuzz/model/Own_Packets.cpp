#include "Own_Packets.h"

namespace Pelgar::ORBE::road_model {

void Own_Packets::take(Band band, const Channels& values) {
    if (band == Band::ap) {
        for (std::size_t channel = 0; channel < channel_count; ++channel) {
            m_packet.ap[m_row][channel] = static_cast<std::int16_t>(values[channel]);
        }
        m_packet.stamps[m_row] = static_cast<std::uint32_t>(m_seconds);
        m_seconds += 3.3333334e-5F;
        m_row = (m_row + 1) % packet_rows;
        return;
    }
    for (std::size_t channel = 0; channel < channel_count; ++channel) {
        m_packet.lfp[channel] = static_cast<std::int16_t>(values[channel]);
    }
    m_row = 0;
    if (queue.size() <= 500) {
        queue.push_back(m_packet);
    } else if (m_process.np_packet_drops++ % 256 == 0) {
        m_told.log.emplace_back("0 MT_NP_PXI_Queue overflow");
    }
}

} // namespace Pelgar::ORBE::road_model
