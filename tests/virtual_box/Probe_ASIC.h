// Test support, virtual box. The probe ASIC on the headstage's bus: control registers and three
// shift-register chains that keep every upload. Not locked: the headstage that owns it does that.
#pragma once

#include "I2C_Device.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <vector>

namespace Pelgar::ORBE::test {

class Probe_ASIC final : public I2C_Device {
public:
    // Registers through which a chain is shifted in.
    static constexpr std::uint8_t base_chain_of_odd_channels = 0x0C;
    static constexpr std::uint8_t base_chain_of_even_channels = 0x0D;
    static constexpr std::uint8_t shank_chain = 0x0E;

    // One upload: the length that was announced, and the bytes in the bit order of the chain's image.
    struct Upload {
        std::size_t announced = 0;
        std::vector<std::uint8_t> bytes;

        bool operator==(const Upload&) const = default;
    };

    Probe_ASIC();

    // The status register judges the chain that was shifted in last: it is good when the chain's last two
    // uploads are complete, of the chain's own length, and equal.
    std::uint8_t read(std::uint8_t reg) override;
    void write(std::uint8_t reg, std::uint8_t value) override;
    void lose_power() override;

    // All uploads of a chain since power-up, in order.
    const std::vector<Upload>& uploads(std::uint8_t chain) const;

    // The bytes of the last one; empty when there is none.
    std::vector<std::uint8_t> chain(std::uint8_t chain) const;

private:
    void shift_in(std::uint8_t chain, std::uint8_t byte);
    bool last_chain_is_good() const;

    std::map<std::uint8_t, std::vector<Upload>> m_uploads;
    std::size_t m_announced = 0;
    bool m_begins = false; // the next byte is the first of an upload
    std::uint8_t m_last_chain = 0;
};

} // namespace Pelgar::ORBE::test
