#include "expectation/ADC_Expectation.h"

#include <utility>

namespace Pelgar::ORBE::recording {

ADC_Expectation::ADC_Expectation(Piece_Reader reader, unsigned streams)
    : m_reader(std::move(reader)), m_model(streams) {}

const ADC_Packet* ADC_Expectation::next() {
    while (true) {
        if (const ADC_Packet* const packet = m_model.next()) {
            return packet;
        }
        if (!m_reader.next()) {
            return nullptr;
        }
        m_model.feed(m_reader.piece());
    }
}

} // namespace Pelgar::ORBE::recording
