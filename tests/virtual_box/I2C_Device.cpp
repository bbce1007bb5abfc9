#include "I2C_Device.h"

namespace Pelgar::ORBE::test {

I2C_Device::I2C_Device(Memory memory, std::initializer_list<std::pair<std::uint8_t, std::uint8_t>> contents)
    : m_memory(memory) {
    for (const auto& [reg, value] : contents) {
        set(reg, value);
    }
}

void I2C_Device::lose_power() {
    if (m_memory == Memory::lost_without_power) {
        m_registers = m_at_power_up;
    }
}

void I2C_Device::set(std::uint8_t reg, std::uint8_t value) {
    m_at_power_up[reg] = value;
    m_registers[reg] = value;
}

void I2C_Device::set_text(std::uint8_t reg, std::string_view text) {
    for (const char character : text) {
        set(reg++, static_cast<std::uint8_t>(character));
    }
    set(reg, 0);
}

} // namespace Pelgar::ORBE::test
