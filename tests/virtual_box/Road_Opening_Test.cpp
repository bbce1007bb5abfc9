// Opening and closing the basestation on the virtual box: every register access, and every way to fail.
#include "Box_Fixture.h"

#include <chrono>
#include <string>
#include <vector>

namespace {

using namespace Pelgar::ORBE;
using namespace Pelgar::ORBE::test;
using namespace std::chrono_literals;
using Neuropixels::closeBS;
using Neuropixels::openBS;
using Neuropixels::SUCCESS;
using Neuropixels::VERSION_MISMATCH;
using Accesses = std::vector<Register_Access>;
using Open_Result = Virtual_Box::Open_Result;

class Opening : public Box_Fixture {
protected:
    static constexpr std::uint32_t config = Virtual_Box::configuration;

    // From the design check to the registered receive buffer.
    static Accesses opening_accesses() {
        constexpr std::uint32_t signature = Virtual_Box::neuropixels_signature;
        return {
            read_of(Virtual_Box::signature, signature),
            // Identity.
            read_of(Virtual_Box::build_timestamp, 0x9A300000),
            read_of(Virtual_Box::signature, signature),
            read_of(Virtual_Box::efuse, 0x0BE00001),
            read_of(Virtual_Box::temperature, 0x9770),
            // Reset, ONE mode, power, port 4.
            write_of(config, 0),
            read_of(config, 0),
            write_of(config, 0x040),
            read_of(config, 0x040),
            write_of(config, 0x140),
            read_of(config, 0x140),
            write_of(config, 0x540),
            read_of(Virtual_Box::pll_locks, 0xF),
            // End-of-packet mode off and on.
            read_of(config, 0x540),
            write_of(config, 0x540),
            read_of(config, 0x540),
            write_of(config, 0x5C0),
        };
    }

    bool detected(int port) const {
        bool present = false;
        EXPECT_EQ(Neuropixels::detectHeadStage(slot, port, &present), SUCCESS);
        return present;
    }
};

TEST_F(Opening, MakesExactlyTheseRegisterAccesses) {
    EXPECT_EQ(openBS(slot), SUCCESS);
    EXPECT_EQ(m_box->accesses(), opening_accesses());
    EXPECT_EQ(m_box->opens(), 1U);
    EXPECT_EQ(m_box->boots(), std::vector<std::uint32_t>{});
    EXPECT_EQ(m_waiter.waits(), std::vector<std::chrono::milliseconds>{});
    EXPECT_EQ(m_log.count(0, "FPGA design build timestamp : 19-04-2024\n"), 1);
    EXPECT_EQ(m_log.count(0, "FPGA digital_design_signature : 4e500040\n"), 2);
    EXPECT_EQ(m_log.count(0, "NP port_count_parameter_from_fpga : 4\n"), 1);
    EXPECT_EQ(m_log.count(0, "FPGA efuse_usr : 0be00001\n"), 1);
    EXPECT_EQ(m_log.count(0, "FPGA temperature : 24.99\n"), 1);
    EXPECT_EQ(m_log.count(0, "Converter data structures prepared (2)"), 1);
    EXPECT_EQ(error_level(), Error_Level::healthy);
}

TEST_F(Opening, ClosingSwitchesEverythingOff) {
    open();
    EXPECT_EQ(closeBS(slot), SUCCESS);
    EXPECT_EQ(m_box->accesses(), (Accesses{read_of(config, 0x5C0), write_of(config, 0x5C0),
                                           write_of(RHD_Interface_Model::enabled_streams, 0),
                                           write_of(config, 0), write_of(RHD_Interface_Model::mode, 0)}));
    EXPECT_EQ(openBS(slot), SUCCESS) << "the box may be opened again";
    EXPECT_EQ(m_box->opens(), 2U);
}

TEST_F(Opening, OpeningTwiceTakesTheOldConnectionDownFirst) {
    open();
    EXPECT_EQ(openBS(slot), SUCCESS);
    EXPECT_EQ(m_log.count(0, "Warning re initalizing library. slotID : 2"), 1);
    Accesses expected{write_of(config, 0), write_of(RHD_Interface_Model::mode, 0)};
    const Accesses again = opening_accesses();
    expected.insert(expected.end(), again.begin(), again.end());
    EXPECT_EQ(m_box->accesses(), expected);
}

TEST_F(Opening, DesignOfAnotherKindIsReplaced) {
    m_box->set_register(Virtual_Box::signature, 0x12340010);
    EXPECT_EQ(openBS(slot), SUCCESS);
    Accesses expected{
        read_of(Virtual_Box::signature, 0x12340010),
        write_of(Virtual_Box::foreign_icap_number, 0x10),
        write_of(Virtual_Box::foreign_icap_value, 0x00B00000),
        write_of(Virtual_Box::foreign_icap_start, 1),
        read_of(Virtual_Box::foreign_icap_status, 1),
        write_of(Virtual_Box::foreign_icap_start, 0),
        write_of(Virtual_Box::foreign_icap_number, 4),
        write_of(Virtual_Box::foreign_icap_value, 15),
        write_of(Virtual_Box::foreign_icap_start, 1),
    };
    const Accesses rest = opening_accesses();
    expected.insert(expected.end(), rest.begin() + 1, rest.end());
    EXPECT_EQ(m_box->accesses(), expected) << "the design is not checked a second time";
    EXPECT_EQ(m_box->boots(), (std::vector<std::uint32_t>{0x00B00000}));
    EXPECT_EQ(m_box->opens(), 2U);
    EXPECT_EQ(m_waiter.waits(), (std::vector<std::chrono::milliseconds>{10s}));
    EXPECT_EQ(m_log.count(0, "Switching FPGA design"), 1);
    EXPECT_EQ(m_log.count(0, "Waiting for reboot of the FPGA"), 1);
    EXPECT_EQ(m_log.count(0, "Wait end"), 1);
    EXPECT_EQ(Neuropixels::bs_get_fpga_design_label(), "4e500040");
}

TEST_F(Opening, BoxThatIsGoneAfterTheRebootFailsTheOpening) {
    m_box->set_register(Virtual_Box::signature, 0x12340010);
    m_box->queue_open_results({Open_Result::opened, Open_Result::no_box});
    EXPECT_EQ(openBS(slot), VERSION_MISMATCH);
    EXPECT_EQ(m_log.count(-2, "Open driver failed"), 1);
    EXPECT_EQ(error_level(), Error_Level::driver_open);
    EXPECT_EQ(openBS(slot), SUCCESS) << "it runs the right design by now";
    EXPECT_EQ(m_box->boots().size(), 1U);
}

TEST_F(Opening, ConfigurationPortIsAskedUntilItIsDone) {
    m_box->set_register(Virtual_Box::signature, 0x12340010);
    m_box->foreign_icap_done_at_read(std::nullopt);
    constexpr std::size_t patience = 500;
    m_waiter.on_wait([&](std::size_t number) {
        if (number == patience) {
            m_box->foreign_icap_done_at_read(1);
        }
    });
    const Printed printed = printed_by([&] { EXPECT_EQ(openBS(slot), SUCCESS); });
    EXPECT_EQ(m_waiter.count(100ms), patience);
    const std::string waiting = "Waiting for icap_done\n";
    std::size_t lines = 0;
    for (auto at = printed.out.find(waiting); at != std::string::npos;
         at = printed.out.find(waiting, at + 1)) {
        ++lines;
    }
    EXPECT_EQ(lines, patience);
}

TEST_F(Opening, RebootIntoADesignWithoutPortsFails) {
    m_box->set_register(Virtual_Box::signature, 0x12340010);
    m_box->put_design_into_flash(Virtual_Box::neuropixels_flash_address, 0x4E500000);
    EXPECT_EQ(openBS(slot), VERSION_MISMATCH);
    EXPECT_EQ(m_log.count(-2, "Invalid m_np_port_count_parameter_from_fpga"), 1);
    EXPECT_EQ(m_waiter.count(1000ms), 5U);
}

TEST_F(Opening, NoLinkThatLocksFailsAfterFiveLooks) {
    for (std::size_t port = 0; port < box_port_count; ++port) {
        m_box->lock_at_look(port, std::nullopt);
    }
    EXPECT_EQ(openBS(slot), VERSION_MISMATCH);
    EXPECT_EQ(m_waiter.waits(), (std::vector<std::chrono::milliseconds>(5, 1000ms)));
    EXPECT_EQ(m_log.count(0, "Masked pll status : 0"), 5);
    EXPECT_EQ(m_log.count(0, "Waiting for NP Port PLL lock"), 5);
    EXPECT_EQ(m_log.count(-1, "check_np_ports_status failed check connector connections"), 1);
    EXPECT_EQ(error_level(), Error_Level::healthy);
    EXPECT_FALSE(detected(1));

    m_box->lock_at_look(2, 1);
    EXPECT_EQ(openBS(slot), SUCCESS) << "the cable is plugged in now";
    EXPECT_TRUE(detected(3));
    EXPECT_FALSE(detected(1));
}

TEST_F(Opening, LinkThatLocksAtTheLastLookIsEnough) {
    for (std::size_t port = 0; port < box_port_count; ++port) {
        m_box->lock_at_look(port, std::nullopt);
    }
    m_box->lock_at_look(1, 5);
    EXPECT_EQ(openBS(slot), SUCCESS);
    EXPECT_EQ(m_waiter.waits(), (std::vector<std::chrono::milliseconds>(4, 1000ms)));
    EXPECT_EQ(m_log.count(0, "At least one NP Port PLL lock"), 1);
}

TEST_F(Opening, HeadstagesAreDetectedAsTheirLinksLock) {
    m_box->lock_at_look(0, std::nullopt);
    m_box->lock_at_look(2, std::nullopt);
    open();
    EXPECT_FALSE(detected(1));
    EXPECT_TRUE(detected(2));
    EXPECT_FALSE(detected(3));
    EXPECT_TRUE(detected(4));
    EXPECT_FALSE(detected(5));
    EXPECT_FALSE(detected(0));
}

TEST_F(Opening, PortsThatTheDesignDoesNotOfferAreNotDetected) {
    m_box->set_register(Virtual_Box::signature, 0x4E500020);
    open();
    EXPECT_TRUE(detected(2));
    EXPECT_FALSE(detected(3));
    std::uint8_t ports = 0;
    EXPECT_EQ(Neuropixels::get_available_port_capability(slot, &ports), SUCCESS);
    EXPECT_EQ(ports, 2);
}

TEST_F(Opening, NoBoxIsAFailureThatASecondTryMayMend) {
    m_box->queue_open_results({Open_Result::no_box});
    EXPECT_EQ(openBS(slot), VERSION_MISMATCH);
    EXPECT_EQ(m_log.count(-2, "Open driver failed"), 1);
    EXPECT_EQ(error_level(), Error_Level::driver_open);
    EXPECT_EQ(closeBS(slot), SUCCESS);
    EXPECT_EQ(m_box->accesses(), Accesses{});
    EXPECT_EQ(openBS(slot), SUCCESS);
    EXPECT_EQ(m_box->accesses(), opening_accesses());
}

TEST_F(Opening, ExceptionOfTheDriverIsAFailureThatASecondTryMayMend) {
    m_box->queue_open_results({Open_Result::mapping_fails});
    EXPECT_EQ(openBS(slot), VERSION_MISMATCH);
    EXPECT_EQ(m_log.count(-2, "openBS : map bar ioctl failed!"), 1);
    EXPECT_EQ(error_level(), Error_Level::driver_open);
    EXPECT_EQ(m_box->accesses(), Accesses{});
    EXPECT_EQ(openBS(slot), SUCCESS) << "without closing in between";
    EXPECT_EQ(m_box->accesses(), opening_accesses());
}

} // namespace
