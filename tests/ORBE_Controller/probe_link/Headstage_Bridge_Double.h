// Test double: the register space with a port's UART at 0x400 and a headstage bridge behind it. The bridge
// answers from one register map a device, keeps every frame it was sent, and fails where it is told to.
#pragma once

#include "fpga/I_MemMapped_AXI.h"

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <utility>
#include <vector>

namespace Pelgar::ORBE::test {

using Frame = std::vector<std::uint8_t>;
using Frames = std::vector<Frame>;

class Headstage_Bridge_Double : public I_MemMapped_AXI {
public:
    static constexpr std::uint32_t uart_base = 0x400;

    void write_register(std::uint32_t address, std::uint32_t value) override;
    std::uint32_t read_register(std::uint32_t address) override;
    void write_register_bytes(std::uint32_t address, std::uint8_t count, const std::uint8_t* bytes) override;

    // The register of a device (8-bit address, bit 0 clear).
    std::uint8_t& reg(std::uint8_t device, std::uint8_t address) { return m_registers[device][address]; }

    // The register answers `value` from now on, whatever is written to it.
    void pin(std::uint8_t device, std::uint8_t address, std::uint8_t value) {
        m_pinned[{device, address}] = value;
    }

    // Transactions are counted from 1, with the one after the last `forget`.
    void answer_status(std::size_t transaction, std::uint8_t status) { m_status[transaction] = status; }

    // The transaction's answer breaks off after `bytes` bytes.
    void cut_answer(std::size_t transaction, std::size_t bytes) { m_cut[transaction] = bytes; }

    // The transaction takes this much real time.
    void delay(std::size_t transaction, std::chrono::milliseconds time) { m_delay[transaction] = time; }

    // Everything that was sent, in order.
    const Frames& frames() const { return m_frames; }

    // Bytes that nobody has received.
    std::size_t unread() const { return m_answer.size(); }

    // Registers keep their values; frames, answers and failures are gone.
    void forget();

private:
    void carry_out(const Frame& frame);
    std::uint8_t read_value(std::uint8_t device, std::uint8_t address);

    std::map<std::uint8_t, std::array<std::uint8_t, 256>> m_registers;
    std::map<std::pair<std::uint8_t, std::uint8_t>, std::uint8_t> m_pinned;
    std::map<std::size_t, std::uint8_t> m_status;
    std::map<std::size_t, std::size_t> m_cut;
    std::map<std::size_t, std::chrono::milliseconds> m_delay;
    Frames m_frames;
    std::deque<std::uint8_t> m_answer;
};

} // namespace Pelgar::ORBE::test
