#include "expectation/Packet_Filler.h"

#include <cstring>

namespace Pelgar::ORBE::recording {

namespace {

constexpr float sample_period = 3.3333334e-5F;

} // namespace

static_assert(sizeof(Channel_Values) == sizeof(Neuropixels::electrodePacket::lfpData));

void Packet_Filler::add_ap(const Channel_Values& values) {
    std::memcpy(m_packet.apData[m_row], values.data(), sizeof(values));
    m_packet.timestamp[m_row] = static_cast<std::uint32_t>(m_time);
    m_time += sample_period;
    m_row = (m_row + 1) % slots_per_sample;
}

const Neuropixels::electrodePacket& Packet_Filler::add_lfp(const Channel_Values& values) {
    std::memcpy(m_packet.lfpData, values.data(), sizeof(values));
    m_row = 0;
    return m_packet;
}

} // namespace Pelgar::ORBE::recording
