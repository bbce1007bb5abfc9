#include "RHD_Interface_Model.h"

#include <bit>

namespace Pelgar::ORBE::test {

namespace {

constexpr std::uint32_t continuous = 1U << 1;
constexpr std::uint32_t program_spi_clock = 1U << 0;
constexpr std::uint32_t start_acquisition = 1U << 0;

} // namespace

void RHD_Interface_Model::write(std::uint32_t address, std::uint32_t value) {
    switch (address) {
    case mode:
        m_continuous = (value & continuous) != 0;
        m_triggered = m_triggered && m_continuous;
        break;
    case enabled_streams:
        m_streams = static_cast<unsigned>(std::popcount(value));
        break;
    case triggers:
        if ((value & program_spi_clock) != 0) {
            m_spi_clock_locked = m_spi_clock_locks;
        }
        break;
    case acquisition_trigger:
        if ((value & start_acquisition) != 0) {
            m_triggered = true;
        }
        break;
    default:
        break;
    }
}

std::optional<unsigned> RHD_Interface_Model::running_streams() const {
    if (!m_continuous || !m_triggered) {
        return std::nullopt;
    }
    return m_streams;
}

} // namespace Pelgar::ORBE::test
