// Test support: a port's UART with the bridge double behind it, and short names for the frames of the wire.
#pragma once

#include "Headstage_Bridge_Double.h"
#include "common/Waiting.h"
#include "fpga/UART_Module.h"

#include <gtest/gtest.h>
#include <loguru.hpp>

#include <array>
#include <chrono>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace Pelgar::ORBE::test {

inline Frame asic_write(std::uint8_t reg, std::uint8_t value) {
    return {0x79, 0xE0, reg, 0x01, value};
}

inline Frame asic_read(std::uint8_t reg) {
    return {0x79, 0xE1, reg, 0x01};
}

inline Frame serializer_write(std::uint8_t reg, std::uint8_t value) {
    return {0x79, 0x80, reg, 0x01, value};
}

inline Frame serializer_read(std::uint8_t reg) {
    return {0x79, 0x81, reg, 0x01};
}

inline Frame deserializer_write(std::uint8_t reg, std::uint8_t value) {
    return {0x79, 0x90, reg, 0x01, value};
}

inline Frame deserializer_read(std::uint8_t reg) {
    return {0x79, 0x91, reg, 0x01};
}

// The text of the std::runtime_error that the operation throws; anything else fails the test.
template <typename Operation>
std::string error_of(Operation operation) {
    try {
        operation();
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    ADD_FAILURE() << "nothing was thrown";
    return {};
}

// Counts the waits instead of sitting through them.
class Counted_Waits {
public:
    Counted_Waits()
        : m_before(replace_waiter([this](std::chrono::milliseconds time) { m_waits.push_back(time); })) {}

    ~Counted_Waits() { replace_waiter(m_before); }

    Counted_Waits(const Counted_Waits&) = delete;
    Counted_Waits& operator=(const Counted_Waits&) = delete;

    const std::vector<std::chrono::milliseconds>& waits() const { return m_waits; }

private:
    std::vector<std::chrono::milliseconds> m_waits;
    Waiter m_before;
};

class Probe_Link_Fixture : public testing::Test {
protected:
    Probe_Link_Fixture() {
        // Log lines have their own capture; standard error is left to what the library prints there.
        loguru::g_stderr_verbosity = loguru::Verbosity_OFF;
        // The UART prints a line when a frame is longer than any before it in the process; this takes it out
        // of the way.
        const std::array<std::uint8_t, 5> longest_frame{0x79, 0x00, 0x00, 0x01, 0x00};
        m_uart.send(longest_frame.data(), longest_frame.size());
        m_bridge.forget();
    }

    Headstage_Bridge_Double m_bridge;
    UART_Module m_uart{&m_bridge, Headstage_Bridge_Double::uart_base};
};

} // namespace Pelgar::ORBE::test
