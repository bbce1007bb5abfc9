// Construction, opening and the end of a controller.
#include "Controller_Fixture.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <vector>

namespace {

using namespace Pelgar::ORBE;
using namespace Pelgar::ORBE::test;
using Accesses = std::vector<Register_Access>;

class Lifecycle : public Controller_Fixture {};

TEST_F(Lifecycle, ConstructionTouchesNoHardwareAndNamesTheMode) {
    EXPECT_EQ(m_registers.accesses(), Accesses{});
    EXPECT_EQ(m_box->open_calls().size(), 0U);
    EXPECT_EQ(m_log.count(0, "ORBE_Controller_Library ctor. (HW mode)"), 1);
    EXPECT_EQ(m_controller->get_current_error_level(), Error_Level::healthy);
    EXPECT_FALSE(m_controller->is_in_simulation_mode());
    EXPECT_EQ(m_controller->get_np_port_count_from_fpga_signature(), 0);
    EXPECT_EQ(m_controller->get_cached_np_port_status(), 0);

    const ORBE_Controller_Library simulated(true);
    EXPECT_EQ(m_log.count(0, "ORBE_Controller_Library ctor. (Simulation mode)"), 1);
    EXPECT_TRUE(simulated.is_in_simulation_mode());
}

TEST_F(Lifecycle, DestructionIsLoggedAndFinalizesTheStream) {
    EXPECT_TRUE(m_controller->open());
    m_controller.reset();
    EXPECT_EQ(m_log.count(0, "ORBE_Controller_Library dtor"), 1);
    EXPECT_TRUE(m_log.has_scope(0, "finalize_stream"));
    EXPECT_EQ(m_registers.accesses(), (Accesses{write_of(configuration, 0), write_of(0x1000, 0)}));
}

TEST_F(Lifecycle, OpenNamesTheDriver) {
    EXPECT_TRUE(m_controller->open());
    EXPECT_EQ(m_box->open_calls(),
              (std::vector<Fake_ORBE_Controller::Open_Call>{{"ORBE_Dext_Driver", true}}));
    EXPECT_TRUE(m_log.has_scope(0, "open"));
    EXPECT_EQ(m_controller->get_current_error_level(), Error_Level::healthy);
}

TEST_F(Lifecycle, NothingTouchesTheRegistersBeforeTheConnectionIsOpen) {
    const std::string not_open = "the box is not open";
    const auto text_of = [](auto operation) { return text_thrown_by<std::runtime_error>(operation); };
    EXPECT_EQ(text_of([&] { m_controller->check_and_switch_firmware_if_nec(true); }), not_open);
    EXPECT_EQ(text_of([&] { m_controller->icap_boot(0); }), not_open);
    EXPECT_EQ(text_of([&] { m_controller->pre_init(true); }), not_open);
    EXPECT_EQ(text_of([&] { m_controller->get_design_identifier_from_fpga(); }), not_open);
    EXPECT_EQ(text_of([&] { m_controller->get_fpga_temperature(); }), not_open);
    EXPECT_EQ(text_of([&] { m_controller->read_ORBE_HW_info(); }), not_open);
    EXPECT_EQ(text_of([&] { m_controller->set_ttl_out(1); }), not_open);
    EXPECT_EQ(text_of([&] { m_controller->prepare_for_streaming(); }), not_open);
    EXPECT_EQ(text_of([&] { m_controller->enable_streaming(true, {0}, true, {0}, true); }), not_open);
    EXPECT_EQ(text_of([&] { m_controller->disable_streaming(); }), not_open);
    m_controller.reset();
    EXPECT_EQ(m_log.count(-2, "finalize_stream failed : the box is not open"), 1);
    EXPECT_EQ(m_registers.accesses(), Accesses{});
}

TEST_F(Lifecycle, FailedOpenIsAnErrorAndLeavesTheRegistersAlone) {
    m_box->set_open_result(false);
    EXPECT_FALSE(m_controller->open());
    EXPECT_EQ(m_log.count(-2, "Open driver failed"), 1);
    EXPECT_EQ(m_controller->get_current_error_level(), Error_Level::driver_open);
    EXPECT_EQ(static_cast<int>(m_controller->get_current_error_level()), 2);
    m_controller->disable_streaming();
    m_controller.reset();
    EXPECT_EQ(m_registers.accesses(), Accesses{});
}

TEST_F(Lifecycle, ExceptionOfTheBackEndPassesAndLeavesTheRegistersAlone) {
    m_box->set_open_error("map bar ioctl failed!");
    EXPECT_EQ(text_thrown_by<std::runtime_error>([&] { m_controller->open(); }), "map bar ioctl failed!");
    EXPECT_EQ(m_controller->get_current_error_level(), Error_Level::driver_open);
    m_controller.reset();
    EXPECT_EQ(m_registers.accesses(), Accesses{}) << "there is no mapped register space to write to";
}

TEST_F(Lifecycle, LibraryVersion) {
    EXPECT_EQ(m_controller->get_library_version(), "1.0");
}

} // namespace
