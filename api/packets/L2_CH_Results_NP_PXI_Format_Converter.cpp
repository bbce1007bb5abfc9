#include "packets/L2_CH_Results_NP_PXI_Format_Converter.h"

#include "common/Console.h"

#include <algorithm>
#include <cstring>

namespace Pelgar::ORBE::npoe_adapter {

namespace {

// One AP sample period in seconds. The running time is a float on purpose: hosts know the stamps that come of
// its rounding, which stop at 1024 s.
constexpr float ap_sample_period = 3.3333334e-5F;

} // namespace

L2_CH_Results_NP_PXI_Format_Converter::L2_CH_Results_NP_PXI_Format_Converter() {
    console::out("L2_CH_Results_NP_PXI_Format_Converter ctor\n");
    console::out("sizeof(m_ep)) : ", sizeof(*m_ep), "\n");
}

void L2_CH_Results_NP_PXI_Format_Converter::publish_ap_ch_data(
    std::uint16_t (&values)[demux::channel_count]) {
    std::memcpy(m_ep->apData[m_ap_index], values, sizeof(values));
    m_ep->timestamp[m_ap_index] = static_cast<std::uint32_t>(m_time);
    m_time += ap_sample_period;
    m_rows_with_values = std::max(m_rows_with_values, m_ap_index + 1);
    m_ap_index = (m_ap_index + 1) % NP1_PROBE_SUPERFRAMESIZE;
}

void L2_CH_Results_NP_PXI_Format_Converter::publish_lp_ch_data(
    std::uint16_t (&values)[demux::channel_count]) {
    std::memcpy(m_ep->lfpData, values, sizeof(values));
    take_over_missing_rows();
    const Neuropixels::electrodePacket* const packet = m_ep.get();
    if (m_queue.exchange(m_ep)) {
        m_previous = packet;
        m_rows_with_values = 0;
        std::memset(m_ep->Status, 0, sizeof(m_ep->Status));
    } else {
        // What is dropped is the packet before of the next one.
        m_rows_with_values = NP1_PROBE_SUPERFRAMESIZE;
    }
    ++m_lfp_count;
    m_ap_index = 0;
}

// Rows that nothing was published for hold what lay in the memory that the queue has given.
void L2_CH_Results_NP_PXI_Format_Converter::take_over_missing_rows() {
    for (std::uint32_t row = m_rows_with_values; row < NP1_PROBE_SUPERFRAMESIZE; ++row) {
        std::memcpy(m_ep->apData[row], m_previous->apData[row], sizeof(m_ep->apData[row]));
        m_ep->timestamp[row] = m_previous->timestamp[row];
    }
}

void L2_CH_Results_NP_PXI_Format_Converter::burst_begins() {
    m_queue.begin_burst();
}

void L2_CH_Results_NP_PXI_Format_Converter::burst_ends() {
    m_queue.end_burst();
}

} // namespace Pelgar::ORBE::npoe_adapter
