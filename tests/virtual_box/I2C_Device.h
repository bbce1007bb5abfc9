// Test support, virtual box. One device on a headstage's I2C bus: 256 registers of a byte. Volatile ones lose
// what was written when the power goes. Not locked: the headstage that owns it does that.
#pragma once

#include <array>
#include <cstdint>
#include <initializer_list>
#include <string_view>
#include <utility>

namespace Pelgar::ORBE::test {

class I2C_Device {
public:
    using Registers = std::array<std::uint8_t, 256>;

    enum class Memory : std::uint8_t { lost_without_power, kept };

    explicit I2C_Device(Memory memory,
                        std::initializer_list<std::pair<std::uint8_t, std::uint8_t>> contents = {});
    virtual ~I2C_Device() = default;
    I2C_Device(const I2C_Device&) = delete;
    I2C_Device& operator=(const I2C_Device&) = delete;

    // What the bus does.
    virtual std::uint8_t read(std::uint8_t reg) {
        if (m_flickering[reg]) {
            m_registers[reg] ^= 1U;
        }
        return m_registers[reg];
    }

    virtual void write(std::uint8_t reg, std::uint8_t value) { m_registers[reg] = value; }

    virtual void lose_power();

    // Replaces what the register holds, now and after every loss of power.
    void set(std::uint8_t reg, std::uint8_t value);

    // Stores the characters and a zero from `reg` on.
    void set_text(std::uint8_t reg, std::string_view text);

    // Makes every read of the register find its lowest bit changed.
    void flicker(std::uint8_t reg) { m_flickering[reg] = true; }

    std::uint8_t value(std::uint8_t reg) const { return m_registers[reg]; }

private:
    Memory m_memory;
    Registers m_at_power_up{};
    Registers m_registers{};
    std::array<bool, 256> m_flickering{};
};

} // namespace Pelgar::ORBE::test
