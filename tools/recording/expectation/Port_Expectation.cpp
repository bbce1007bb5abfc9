#include "expectation/Port_Expectation.h"

#include <utility>

namespace Pelgar::ORBE::recording {

Port_Expectation::Port_Expectation(Piece_Reader reader, unsigned port)
    : m_reader(std::move(reader)), m_model(port) {}

const Neuropixels::electrodePacket* Port_Expectation::next() {
    while (true) {
        if (const Neuropixels::electrodePacket* const packet = m_model.next()) {
            return packet;
        }
        if (!m_reader.next()) {
            return nullptr;
        }
        m_model.feed(m_reader.piece());
    }
}

} // namespace Pelgar::ORBE::recording
