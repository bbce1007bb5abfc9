// Test support: the register accesses of SPI transactions, as a test expects them.
#pragma once

#include "Register_Recorder.h"

#include <cstdint>
#include <vector>

namespace Pelgar::ORBE::test {

class SPI_Accesses {
public:
    static constexpr std::uint32_t control = 0x0560;
    static constexpr std::uint32_t status = 0x0564;
    static constexpr std::uint32_t transmit = 0x0568;
    static constexpr std::uint32_t receive = 0x056C;
    static constexpr std::uint32_t slave_select = 0x0570;

    // Both FIFOs empty.
    static constexpr std::uint32_t idle = 0x5;

    SPI_Accesses& select() { return add(write_of(slave_select, 0)); }

    SPI_Accesses& deselect() { return add(write_of(slave_select, 1)); }

    // The bytes go into the FIFO and are on their way.
    SPI_Accesses& start(const std::vector<std::uint8_t>& bytes) {
        add(write_of(control, 0x186));
        for (const std::uint8_t byte : bytes) {
            add(write_of(transmit, byte));
        }
        return add(write_of(control, 0x86));
    }

    // One load without a hitch, for which these bytes come back.
    SPI_Accesses& load(const std::vector<std::uint8_t>& bytes, const std::vector<std::uint8_t>& answer) {
        start(bytes);
        add(read_of(status, idle));
        for (const std::uint8_t byte : answer) {
            add(read_of(receive, byte));
        }
        return add(read_of(status, idle));
    }

    // The same, with zeros coming back.
    SPI_Accesses& load(const std::vector<std::uint8_t>& bytes) {
        return load(bytes, std::vector<std::uint8_t>(bytes.size()));
    }

    // A whole transaction of one load.
    SPI_Accesses& transaction(const std::vector<std::uint8_t>& bytes,
                              const std::vector<std::uint8_t>& answer) {
        return select().load(bytes, answer).deselect();
    }

    SPI_Accesses& transaction(const std::vector<std::uint8_t>& bytes) {
        return select().load(bytes).deselect();
    }

    SPI_Accesses& add(const Register_Access& access, std::size_t times = 1) {
        m_accesses.insert(m_accesses.end(), times, access);
        return *this;
    }

    const std::vector<Register_Access>& all() const { return m_accesses; }

private:
    std::vector<Register_Access> m_accesses;
};

} // namespace Pelgar::ORBE::test
