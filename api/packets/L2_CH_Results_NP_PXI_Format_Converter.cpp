#include "packets/L2_CH_Results_NP_PXI_Format_Converter.h"

#include "common/Console.h"

#include <cstring>

namespace Pelgar::ORBE::npoe_adapter {

namespace {

// One AP sample period in seconds. The running time is a float on purpose: hosts know the stamps that come of
// its rounding, which stop at 1024 s.
constexpr float ap_sample_period = 3.3333334e-5F;

} // namespace

L2_CH_Results_NP_PXI_Format_Converter::L2_CH_Results_NP_PXI_Format_Converter() {
    console::out("L2_CH_Results_NP_PXI_Format_Converter ctor\n");
    console::out("sizeof(m_ep)) : ", sizeof(m_ep), "\n");
}

void L2_CH_Results_NP_PXI_Format_Converter::publish_ap_ch_data(
    std::uint16_t (&values)[demux::channel_count]) {
    std::memcpy(m_ep.apData[m_ap_index], values, sizeof(values));
    m_ep.timestamp[m_ap_index] = static_cast<std::uint32_t>(m_time);
    m_time += ap_sample_period;
    m_ap_index = (m_ap_index + 1) % NP1_PROBE_SUPERFRAMESIZE;
}

void L2_CH_Results_NP_PXI_Format_Converter::publish_lp_ch_data(
    std::uint16_t (&values)[demux::channel_count]) {
    std::memcpy(m_ep.lfpData, values, sizeof(values));
    m_queue.push(m_ep);
    ++m_lfp_count;
    m_ap_index = 0;
}

} // namespace Pelgar::ORBE::npoe_adapter
