#include "ports/NP_Port_Locks.h"

#include "Connection_Fixture.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <vector>

namespace {

using namespace std::chrono_literals;
using namespace Pelgar::ORBE;
using namespace Pelgar::ORBE::test;

class Port_Locks : public Connection_Fixture {
protected:
    static constexpr std::uint32_t pll_lock = 0x0200;

    void offer_ports(std::uint32_t count) { m_locks.set_port_count_from_signature(count << 4U); }

    NP_Port_Locks m_locks{m_connection};
};

TEST_F(Port_Locks, NothingIsKnownAtFirst) {
    EXPECT_EQ(m_locks.port_count(), 0);
    EXPECT_EQ(m_locks.cached_status(), 0);
    EXPECT_TRUE(m_registers.accesses().empty());
}

TEST_F(Port_Locks, CountStandsInBits7To4OfTheSignature) {
    m_locks.set_port_count_from_signature(0x4E50'0F3F);
    EXPECT_EQ(m_locks.port_count(), 3);
    EXPECT_EQ(m_log.count(0, "NP port_count_parameter_from_fpga : 3\n"), 1);
}

TEST_F(Port_Locks, OneLockedPortIsEnough) {
    offer_ports(4);
    m_registers.queue_reads(pll_lock, {0, 0x8});
    EXPECT_TRUE(m_locks.check_np_ports_status());
    EXPECT_EQ(m_locks.cached_status(), 0x8);
    EXPECT_EQ(m_waiter.waits(), (std::vector<std::chrono::milliseconds>{1000ms}));
    EXPECT_TRUE(m_log.has_scope(0, "check_np_ports_status"));
}

TEST_F(Port_Locks, WaitsAlsoAfterTheFifthLook) {
    offer_ports(2);
    m_registers.set_value(pll_lock, 0xC);
    EXPECT_FALSE(m_locks.check_np_ports_status());
    EXPECT_EQ(m_waiter.count(1000ms), 5U);
    EXPECT_EQ(m_locks.cached_status(), 0);
}

TEST_F(Port_Locks, LockOfNowIsReadAnewAndMasked) {
    offer_ports(3);
    m_registers.set_value(pll_lock, 0xE);
    EXPECT_FALSE(m_locks.is_locked_now(0));
    EXPECT_TRUE(m_locks.is_locked_now(2));
    EXPECT_FALSE(m_locks.is_locked_now(3)) << "a port that the design does not offer";
    EXPECT_EQ(m_locks.status_now(), 0x6);
    m_registers.set_value(pll_lock, 0x1);
    EXPECT_TRUE(m_locks.is_locked_now(0));
    EXPECT_EQ(m_locks.status_now(), 0x1);
    EXPECT_EQ(m_locks.cached_status(), 0) << "what is cached stays";
}

TEST_F(Port_Locks, SimulationHasTwoPortsAndOneProbe) {
    m_locks.simulate();
    EXPECT_EQ(m_locks.port_count(), 2);
    EXPECT_EQ(m_locks.cached_status(), 1);
    EXPECT_EQ(m_log.count(0, "Simulating pll status : 1"), 1);
    EXPECT_TRUE(m_registers.accesses().empty());
}

} // namespace
