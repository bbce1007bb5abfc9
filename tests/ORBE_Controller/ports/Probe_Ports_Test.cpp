#include "ports/Probe_Ports.h"

#include "Connection_Fixture.h"
#include "Invalid_Subscript.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace Pelgar::ORBE;
using namespace Pelgar::ORBE::test;

constexpr std::uint32_t configuration = 0x0000;

class Ports : public Connection_Fixture {
protected:
    using Connection_Fixture::Connection_Fixture;

    Probe_Ports m_ports{m_connection};
};

class Simulated_Ports : public Ports {
protected:
    Simulated_Ports() : Ports(true) {}
};

TEST_F(Ports, ThereAreNoneBeforeTheyAreMade) {
    for (unsigned port = 0; port < 4; ++port) {
        EXPECT_FALSE(m_ports.is_made(port));
        EXPECT_EQ(text_thrown_by<std::runtime_error>([&] { m_ports.at(port); }),
                  "probe port is not initialised");
    }
    EXPECT_EQ(text_thrown_by<std::runtime_error>([&] { m_ports.link(); }), "probe port is not initialised");
    m_ports.follow_connection();
    EXPECT_TRUE(m_registers.accesses().empty());
}

TEST_F(Ports, FourAreMadeAndNoFifth) {
    m_ports.make();
    for (unsigned port = 0; port < 4; ++port) {
        EXPECT_TRUE(m_ports.is_made(port));
        EXPECT_NE(m_ports.at(port).gain_filter(), nullptr);
    }
    expect_invalid_subscript([&] { m_ports.at(4); });
    expect_invalid_subscript([&] { m_ports.is_made(0xFFFFFFFF); });
}

TEST_F(Ports, MakingAgainReplacesConfigurationAndFilter) {
    m_ports.make();
    const std::weak_ptr<C_L2_CH_Gain_Fix_Filter> filter = m_ports.at(1).gain_filter();
    EXPECT_TRUE(m_ports.at(1).set_gain(10, 7, 7));
    m_ports.make();
    EXPECT_TRUE(filter.expired());
    int ap_gain = -1;
    EXPECT_TRUE(m_ports.at(1).get_gain(10, &ap_gain, nullptr));
    EXPECT_EQ(ap_gain, 0);
}

TEST_F(Ports, OperationRunsOnTheRoutedPort) {
    m_registers.set_value(configuration, 0x540);
    std::vector<std::uint32_t> written;
    EXPECT_TRUE(m_ports.run_on_port("an operation", 2, [&] {
        written = m_registers.writes_to(configuration);
        return true;
    }));
    EXPECT_EQ(written, (std::vector<std::uint32_t>{0x560})) << "before the operation";
    EXPECT_FALSE(m_ports.run_on_port("an operation", 0, [] { return false; }));
}

TEST_F(Ports, WhatIsThrownIsLoggedUnderTheOperationsName) {
    EXPECT_FALSE(m_ports.run_on_port("an operation", 0, []() -> bool { throw std::runtime_error("lost"); }));
    EXPECT_EQ(m_log.count(-2, "Exception caught during an operation : lost"), 1);
    EXPECT_FALSE(m_ports.run_on_port("another one", 7, [] { return true; }));
    EXPECT_EQ(m_log.count(-2, "Exception caught during another one : assign_uart_to_np_channel invalid"), 1);
}

TEST_F(Simulated_Ports, NothingIsRouted) {
    EXPECT_TRUE(m_ports.run_on_port("an operation", 7, [] { return true; }));
    EXPECT_TRUE(m_registers.accesses().empty());
}

} // namespace
