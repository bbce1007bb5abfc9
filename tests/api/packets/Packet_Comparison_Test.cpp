// The packet converter, which builds packets in the queue's own memory, against one that copies every packet.
#include "packets/L2_CH_Results_NP_PXI_Format_Converter.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <deque>
#include <random>

namespace {

using Neuropixels::electrodePacket;
using Pelgar::ORBE::npoe_adapter::L2_CH_Results_NP_PXI_Format_Converter;

// One packet that is filled again and again, and a queue of copies of it.
class Copying_Converter {
public:
    void publish_ap(const std::uint16_t (&values)[384]) {
        std::memcpy(m_packet.apData[m_row], values, sizeof(values));
        m_packet.timestamp[m_row] = static_cast<std::uint32_t>(m_time);
        m_time += 3.3333334e-5F;
        m_row = (m_row + 1) % 12;
    }

    void publish_lfp(const std::uint16_t (&values)[384]) {
        std::memcpy(m_packet.lfpData, values, sizeof(values));
        if (queue.size() <= 500) {
            queue.push_back(m_packet);
        }
        m_row = 0;
    }

    std::deque<electrodePacket> queue;

private:
    electrodePacket m_packet{};
    unsigned m_row = 0;
    float m_time = 0.0F;
};

class Packet_Comparison : public testing::TestWithParam<std::uint32_t> {
protected:
    std::size_t draw(std::size_t limit) { return m_random() % limit; }

    void publish(bool lfp) {
        std::uint16_t values[384];
        for (std::uint16_t& value : values) {
            value = static_cast<std::uint16_t>(m_random());
        }
        if (lfp) {
            m_reference.publish_lfp(values);
            m_converter.publish_lp_ch_data(values);
        } else {
            m_reference.publish_ap(values);
            m_converter.publish_ap_ch_data(values);
        }
    }

    void compare_front() {
        const electrodePacket* const packet = m_converter.queue().peek_xfer_buffer_from_queue();
        ASSERT_EQ(std::memcmp(packet, &m_reference.queue.front(), sizeof(electrodePacket)), 0);
        m_converter.queue().pop();
        m_reference.queue.pop_front();
    }

    std::mt19937 m_random{GetParam()};
    Copying_Converter m_reference;
    L2_CH_Results_NP_PXI_Format_Converter m_converter;
};

TEST_P(Packet_Comparison, PacketsAreTheSameWhicheverRowsCome) {
    for (int round = 0; round < 3'000; ++round) {
        // Mostly twelve rows, sometimes none, few, or more than there is room for.
        const std::size_t rows = draw(4) != 0 ? 12 : draw(30);
        for (std::size_t row = 0; row < rows; ++row) {
            publish(false);
        }
        publish(true);
        if (round % 700 < 550) {
            continue; // the queue fills up and drops
        }
        for (std::size_t taken = draw(8); taken > 0 && !m_reference.queue.empty(); --taken) {
            compare_front();
        }
        ASSERT_EQ(m_converter.queue().size(), m_reference.queue.size());
    }
    while (!m_reference.queue.empty()) {
        compare_front();
    }
    EXPECT_EQ(m_converter.queue().size(), 0U);
    EXPECT_EQ(m_converter.completed_packet_count(), 3'000U);
}

// A reader that keeps up: the queue goes round with few packets in memory.
TEST_P(Packet_Comparison, PacketsAreTheSameWhenEachIsTakenAtOnce) {
    for (int round = 0; round < 1'000; ++round) {
        const std::size_t rows = draw(2) != 0 ? 12 : draw(13);
        for (std::size_t row = 0; row < rows; ++row) {
            publish(false);
        }
        publish(true);
        if (draw(3) != 0) {
            while (!m_reference.queue.empty()) {
                compare_front();
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, Packet_Comparison, testing::Range(1U, 4U));

} // namespace
