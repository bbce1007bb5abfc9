#include "expectation/Port_Model.h"

namespace Pelgar::ORBE::recording {

Port_Model::Port_Model(unsigned port) : m_gatherer(port - 1) {}

void Port_Model::feed(std::span<const std::uint8_t> piece) {
    if (m_gatherer.feed(piece)) {
        m_frames.start(m_gatherer.block());
    }
}

const Neuropixels::electrodePacket* Port_Model::next() {
    while (!m_frames.at_end()) {
        switch (m_sorter.sort(m_frames.next())) {
        case Channel_Sorter::Result::ap_sample:
            m_filler.add_ap(m_sorter.ap());
            break;
        case Channel_Sorter::Result::lfp_sample:
            return &m_filler.add_lfp(m_sorter.lfp());
        case Channel_Sorter::Result::nothing:
            break;
        }
    }
    return nullptr;
}

} // namespace Pelgar::ORBE::recording
