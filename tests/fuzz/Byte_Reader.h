// Fuzzing: takes an input apart from front to back. What lies behind its end reads as zeros.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>

namespace Pelgar::ORBE::test {

class Byte_Reader {
public:
    Byte_Reader(const std::uint8_t* data, std::size_t size) : m_bytes(data, size) {}

    bool empty() const { return m_bytes.empty(); }

    std::uint8_t byte() {
        const auto one = bytes(1);
        return one.empty() ? std::uint8_t{0} : one.front();
    }

    // Low byte first, as everything the box sends.
    std::uint16_t word() {
        const unsigned low = byte();
        const unsigned high = byte();
        return static_cast<std::uint16_t>(high << 8 | low);
    }

    // The next bytes, as many as there are.
    std::span<const std::uint8_t> bytes(std::size_t count) {
        const auto taken = m_bytes.first(std::min(count, m_bytes.size()));
        m_bytes = m_bytes.subspan(taken.size());
        return taken;
    }

    std::span<const std::uint8_t> rest() { return bytes(m_bytes.size()); }

private:
    std::span<const std::uint8_t> m_bytes;
};

} // namespace Pelgar::ORBE::test
