#include "Foreign_ICAP_Model.h"

namespace Pelgar::ORBE::test {

namespace {

constexpr std::uint32_t boot_address_register = 0x10;
constexpr std::uint32_t command_register = 0x04;
constexpr std::uint32_t reprogram = 0x0F;
constexpr std::uint32_t start_bit = 1;
constexpr std::uint32_t done_bit = 1;

} // namespace

void Foreign_ICAP_Model::write_register_number(std::uint32_t number) {
    m_number = number;
    m_takes_value = true;
}

void Foreign_ICAP_Model::write_value(std::uint32_t value) {
    m_value = value;
    m_takes_value = false;
}

std::optional<std::uint32_t> Foreign_ICAP_Model::write_start(std::uint32_t value) {
    m_takes_value = false;
    m_started = (value & start_bit) != 0;
    m_reads = 0;
    if (!m_started) {
        return std::nullopt;
    }
    if (m_number == boot_address_register) {
        m_boot_address = m_value;
    }
    if (m_number == command_register && m_value == reprogram) {
        return m_boot_address;
    }
    return std::nullopt;
}

std::uint32_t Foreign_ICAP_Model::read_status() {
    ++m_reads;
    return m_started && m_done_at && m_reads >= *m_done_at ? done_bit : 0;
}

} // namespace Pelgar::ORBE::test
