// The doubles that other tests build on.
#include "Fake_ORBE_Controller.h"

#include "Printed.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <stdexcept>
#include <vector>

namespace {

using Pelgar::ORBE::test::Fake_ORBE_Controller;
using Pelgar::ORBE::test::read_of;
using Pelgar::ORBE::test::Register_Access;
using Pelgar::ORBE::test::Register_Recorder;
using Pelgar::ORBE::test::text_thrown_by;
using Pelgar::ORBE::test::write_of;

TEST(RegisterRecorder, ReadsAnswerQueuedValuesFirstAndThenWhatTheRegisterHolds) {
    Register_Recorder registers;
    EXPECT_EQ(registers.read_register(0x10), 0U);
    registers.set_value(0x10, 1);
    registers.queue_reads(0x10, {7, 8});
    EXPECT_EQ(registers.read_register(0x10), 7U);
    registers.write_register(0x10, 2);
    EXPECT_EQ(registers.read_register(0x10), 8U);
    EXPECT_EQ(registers.read_register(0x10), 2U);
    EXPECT_EQ(registers.value(0x10), 2U);
    EXPECT_EQ(registers.value(0x14), 0U);
}

TEST(RegisterRecorder, KeepsAccessesInOrder) {
    Register_Recorder registers;
    const std::array<std::uint8_t, 2> bytes{5, 6};
    registers.write_register(0x4, 1);
    registers.read_register(0x4);
    registers.write_register_bytes(0x8, 2, bytes.data());
    EXPECT_EQ(registers.accesses(), (std::vector<Register_Access>{write_of(0x4, 1), read_of(0x4, 1),
                                                                  write_of(0x8, 5), write_of(0x8, 6)}));
    EXPECT_EQ(registers.writes(),
              (std::vector<Register_Access>{write_of(0x4, 1), write_of(0x8, 5), write_of(0x8, 6)}));
    EXPECT_EQ(registers.writes_to(0x8), (std::vector<std::uint32_t>{5, 6}));
    registers.clear_accesses();
    EXPECT_TRUE(registers.accesses().empty());
    EXPECT_EQ(registers.value(0x4), 1U);
}

TEST(FakeORBEController, StreamYieldsWhatWasQueuedThenNothing) {
    Fake_ORBE_Controller controller;
    std::array<std::uint8_t, 2> buffer{};
    controller.setup_read(buffer.data(), 2, 0, 1000);
    controller.queue_stream_read({1, 2, 3});
    controller.queue_stream_read({});
    controller.queue_stream_error("c2h transfer failed");
    EXPECT_EQ(controller.queued_stream_reads(), 3U);
    EXPECT_EQ(controller.read_stream(0, true), 2U);
    EXPECT_EQ(buffer, (std::array<std::uint8_t, 2>{1, 2}));
    EXPECT_EQ(controller.read_stream(0, false), 0U);
    EXPECT_EQ(text_thrown_by<std::runtime_error>([&] { controller.read_stream(0, true); }),
              "c2h transfer failed");
    EXPECT_EQ(controller.read_stream(0, true), 0U);
    EXPECT_EQ(controller.read_calls().size(), 4U);
}

TEST(FakeORBEController, OpeningAndClosingAreProgrammedAndCounted) {
    Fake_ORBE_Controller controller;
    EXPECT_TRUE(controller.open_driver_connection("a", true));
    controller.queue_open_results({false});
    EXPECT_FALSE(controller.open_driver_connection("b", false));
    EXPECT_TRUE(controller.open_driver_connection("c", true));
    controller.set_open_result(false);
    EXPECT_FALSE(controller.open_driver_connection("d", true));
    EXPECT_EQ(controller.open_calls(), (std::vector<Fake_ORBE_Controller::Open_Call>{
                                           {"a", true}, {"b", false}, {"c", true}, {"d", true}}));
    controller.close_driver_connection();
    EXPECT_EQ(controller.close_count(), 1);
}

} // namespace
