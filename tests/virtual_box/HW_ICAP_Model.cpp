#include "HW_ICAP_Model.h"

#include <utility>

namespace Pelgar::ORBE::test {

namespace {

constexpr std::uint32_t write_bit = 1;
constexpr std::uint32_t done_bit = 1;

constexpr std::uint32_t sync = 0xAA99'5566;
constexpr std::uint32_t write_boot_address = 0x3002'0001;
constexpr std::uint32_t write_command = 0x3000'8001;
constexpr std::uint32_t reprogram = 0x0F;

std::uint32_t byte_swapped(std::uint32_t word) {
    std::uint32_t result = 0;
    for (unsigned i = 0; i < 4; ++i) {
        result = (result << 8U) | ((word >> (8 * i)) & 0xFFU);
    }
    return result;
}

} // namespace

void HW_ICAP_Model::write_control(std::uint32_t value) {
    if ((value & write_bit) == 0) {
        return;
    }
    m_writing = true;
    m_done = m_behaviour != Behaviour::never_done;
}

std::uint32_t HW_ICAP_Model::read_status() const {
    return m_done ? done_bit : 0;
}

std::uint32_t HW_ICAP_Model::read_control() {
    if (m_writing && m_done && m_behaviour == Behaviour::works) {
        m_writing = false;
        carry_out();
    }
    return m_writing ? write_bit : 0;
}

std::optional<std::uint32_t> HW_ICAP_Model::take_boot_address() {
    return std::exchange(m_boot_address, std::nullopt);
}

void HW_ICAP_Model::carry_out() {
    const std::vector<std::uint32_t> words = std::exchange(m_fifo, {});
    bool in_step = false;
    std::uint32_t boot_address = 0;
    for (std::size_t i = 0; i < words.size(); ++i) {
        const bool has_operand = i + 1 < words.size();
        if (words[i] == sync) {
            in_step = true;
        } else if (in_step && has_operand && words[i] == write_boot_address) {
            boot_address = byte_swapped(words[++i]);
        } else if (in_step && has_operand && words[i] == write_command && words[++i] == reprogram) {
            m_boot_address = boot_address;
        }
    }
}

} // namespace Pelgar::ORBE::test
