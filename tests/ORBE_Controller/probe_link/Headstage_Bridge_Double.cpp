#include "Headstage_Bridge_Double.h"

#include <gtest/gtest.h>

#include <thread>

namespace Pelgar::ORBE::test {

namespace {

constexpr std::uint32_t receive_data = Headstage_Bridge_Double::uart_base;
constexpr std::uint32_t transmit_data = Headstage_Bridge_Double::uart_base + 4;
constexpr std::uint32_t status = Headstage_Bridge_Double::uart_base + 8;

constexpr std::uint32_t transmit_empty = 0x4;
constexpr std::uint32_t receive_valid = 0x1;

} // namespace

void Headstage_Bridge_Double::write_register(std::uint32_t address, std::uint32_t value) {
    ADD_FAILURE() << "single write of " << value << " to address " << address;
}

std::uint32_t Headstage_Bridge_Double::read_register(std::uint32_t address) {
    if (address == status) {
        return transmit_empty | (m_answer.empty() ? 0 : receive_valid);
    }
    if (address != receive_data || m_answer.empty()) {
        ADD_FAILURE() << "read of address " << address << " with " << m_answer.size() << " bytes to receive";
        return 0;
    }
    const std::uint8_t byte = m_answer.front();
    m_answer.pop_front();
    return byte;
}

void Headstage_Bridge_Double::write_register_bytes(std::uint32_t address, std::uint8_t count,
                                                   const std::uint8_t* bytes) {
    EXPECT_EQ(address, transmit_data);
    EXPECT_EQ(m_answer.size(), 0U) << "a transaction began before the answer of the last one was taken";
    m_frames.emplace_back(bytes, bytes + count);
    carry_out(m_frames.back());
}

void Headstage_Bridge_Double::forget() {
    m_status.clear();
    m_cut.clear();
    m_delay.clear();
    m_frames.clear();
    m_answer.clear();
}

void Headstage_Bridge_Double::carry_out(const Frame& frame) {
    const std::size_t transaction = m_frames.size();
    if (const auto found = m_delay.find(transaction); found != m_delay.end()) {
        std::this_thread::sleep_for(found->second);
    }
    ASSERT_GE(frame.size(), 4U);
    ASSERT_EQ(frame[0], 0x79);
    const bool reading = (frame[1] & 1) != 0;
    const auto device = static_cast<std::uint8_t>(frame[1] & 0xFE);
    const std::uint8_t count = frame[3];
    ASSERT_EQ(frame.size(), reading ? 4U : 4U + count);

    const auto wrong = m_status.find(transaction);
    const bool failing = wrong != m_status.end();
    m_answer.push_back(failing ? wrong->second : 0xC3);
    for (std::size_t i = 0; i < count; ++i) {
        const auto address = static_cast<std::uint8_t>(frame[2] + i);
        if (reading) {
            m_answer.push_back(read_value(device, address));
        } else if (!failing) {
            reg(device, address) = frame[4 + i];
        }
    }
    if (const auto cut = m_cut.find(transaction); cut != m_cut.end()) {
        m_answer.resize(cut->second);
    }
}

std::uint8_t Headstage_Bridge_Double::read_value(std::uint8_t device, std::uint8_t address) {
    const auto pinned = m_pinned.find({device, address});
    return pinned != m_pinned.end() ? pinned->second : reg(device, address);
}

} // namespace Pelgar::ORBE::test
