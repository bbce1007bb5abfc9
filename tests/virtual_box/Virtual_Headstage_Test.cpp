// The bridge's frames, its devices and its faults.
#include "Virtual_Headstage.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using namespace Pelgar::ORBE::test;
using Bytes = std::vector<std::uint8_t>;

class Headstage : public testing::Test {
protected:
    // What the bridge answers to the last byte; the ones before it must be taken silently.
    Bytes send(const Bytes& bytes, bool link_is_up = true) {
        Bytes answer;
        for (const std::uint8_t byte : bytes) {
            EXPECT_EQ(answer, Bytes{});
            answer = m_headstage.take(byte, link_is_up);
        }
        return answer;
    }

    Virtual_Headstage m_headstage;
};

TEST_F(Headstage, ReadsAnswerTheAcknowledgeAndTheBytes) {
    EXPECT_EQ(send({0x79, 0x81, 0x1E, 1}), (Bytes{0xC3, 9}));
    EXPECT_EQ(send({0x79, 0x91, 0x1E, 1}), (Bytes{0xC3, 10}));
    EXPECT_EQ(send({0x79, 0x91, 0x04, 1}), (Bytes{0xC3, 0x87}));
    EXPECT_EQ(send({0x79, 0xA1, 0x00, 8}), (Bytes{0xC3, 0x88, 0x77, 0x66, 0x55, 0x44, 0x33, 0x22, 0x11}));
    EXPECT_EQ(send({0x79, 0xA1, 40, 4}), (Bytes{0xC3, 'P', 'R', 'B', '_'}));
    EXPECT_EQ(send({0x79, 0xA5, 0, 2}), (Bytes{0xC3, 0x05, 0x02}));
    EXPECT_EQ(send({0x79, 0xA5, 20, 3}), (Bytes{0xC3, 'N', 'P', '2'}));
    EXPECT_EQ(send({0x79, 0xE1, 0x00, 0}), (Bytes{0xC3})) << "a read of nothing is acknowledged";
}

TEST_F(Headstage, WritesAnswerTheAcknowledgeAndReachTheDevice) {
    EXPECT_EQ(send({0x79, 0x80, 0x04, 1, 0x83}), (Bytes{0xC3}));
    EXPECT_EQ(m_headstage.value(Virtual_Headstage::serializer, 0x04), 0x83);
    EXPECT_EQ(send({0x79, 0xE0, 0x02, 2, 0x11, 0x22}), (Bytes{0xC3}));
    EXPECT_EQ(m_headstage.value(Virtual_Headstage::probe_asic, 0x02), 0x11);
    EXPECT_EQ(m_headstage.value(Virtual_Headstage::probe_asic, 0x03), 0x22);
}

TEST_F(Headstage, FramesAreKeptInOrder) {
    send({0x79, 0x81, 0x1E, 1});
    send({0x79, 0x80, 0x04, 1, 0x83});
    EXPECT_EQ(m_headstage.frames(),
              (std::vector<Link_Frame>{{0x79, 0x81, 0x1E, 1}, {0x79, 0x80, 0x04, 1, 0x83}}));
    m_headstage.forget_frames();
    EXPECT_EQ(m_headstage.frames(), std::vector<Link_Frame>{});
}

TEST_F(Headstage, BytesOutsideAFrameAreCountedAndIgnored) {
    EXPECT_EQ(send({0x00, 0x78, 0x79, 0x81, 0x1E, 1}), (Bytes{0xC3, 9}));
    EXPECT_EQ(m_headstage.stray_bytes(), 2U);
}

TEST_F(Headstage, NothingComesThroughWithoutALink) {
    EXPECT_EQ(send({0x79, 0x81}), Bytes{});
    EXPECT_EQ(send({0x1E, 1}, false), Bytes{});
    EXPECT_EQ(m_headstage.frames(), std::vector<Link_Frame>{});
    EXPECT_EQ(send({0x79, 0x81, 0x1E, 1}), (Bytes{0xC3, 9})) << "the broken frame is forgotten";
}

TEST_F(Headstage, MissingDeviceIsNotAcknowledged) {
    EXPECT_EQ(send({0x79, 0x40, 0x00, 1, 5}), (Bytes{0x00}));
    EXPECT_EQ(send({0x79, 0x41, 0x00, 1}), (Bytes{0x00, 0xFF}));
}

TEST_F(Headstage, SingleFaultStrikesOneTransaction) {
    m_headstage.fail_once(2, Link_Fault::wrong_acknowledge);
    EXPECT_EQ(send({0x79, 0xE0, 0x02, 1, 0x11}), (Bytes{0xC3}));
    EXPECT_EQ(send({0x79, 0xE0, 0x02, 1, 0x22}), (Bytes{0x00}));
    EXPECT_EQ(m_headstage.value(Virtual_Headstage::probe_asic, 0x02), 0x11)
        << "a failed write changes nothing";
    EXPECT_EQ(send({0x79, 0xE0, 0x02, 1, 0x33}), (Bytes{0xC3}));
}

TEST_F(Headstage, LostWriteIsAcknowledgedAllTheSame) {
    m_headstage.fail_once(1, Link_Fault::lost_write);
    m_headstage.fail_once(2, Link_Fault::lost_write);
    EXPECT_EQ(send({0x79, 0xE0, 0x02, 1, 0x11}), (Bytes{0xC3}));
    EXPECT_EQ(send({0x79, 0xE1, 0x02, 1}), (Bytes{0xC3, 0})) << "a read has nothing to lose";
}

TEST_F(Headstage, LastingFaultStrikesFromATransactionOnUntilItIsCleared) {
    m_headstage.fail_from(2, Link_Fault::silence);
    EXPECT_EQ(send({0x79, 0x81, 0x1E, 1}), (Bytes{0xC3, 9}));
    EXPECT_EQ(send({0x79, 0x81, 0x1E, 1}), Bytes{});
    EXPECT_EQ(send({0x79, 0x80, 0x04, 1, 0x83}), Bytes{});
    EXPECT_EQ(m_headstage.value(Virtual_Headstage::serializer, 0x04), 0x43);
    m_headstage.clear_faults();
    EXPECT_EQ(send({0x79, 0x81, 0x1E, 1}), (Bytes{0xC3, 9}));
    EXPECT_EQ(m_headstage.frames().size(), 4U);
}

TEST_F(Headstage, WhatATestSetsOutlastsTheLossOfPower) {
    m_headstage.set(Virtual_Headstage::serializer, 0x1E, 8);
    m_headstage.set_text(Virtual_Headstage::probe_eeprom, 40, "X");
    send({0x79, 0x80, 0x04, 1, 0x83});
    m_headstage.lose_power();
    EXPECT_EQ(send({0x79, 0x81, 0x1E, 1}), (Bytes{0xC3, 8}));
    EXPECT_EQ(send({0x79, 0x81, 0x04, 1}), (Bytes{0xC3, 0x43})) << "what the host wrote is gone";
    EXPECT_EQ(send({0x79, 0xA1, 40, 2}), (Bytes{0xC3, 'X', 0}));
}

} // namespace
