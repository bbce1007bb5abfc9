// The self tests that judge the stream of a probe, in hardware mode: the modelled probe sends what its mode
// registers say.
#include "Box_Fixture.h"
#include "Stream_Check.h"

#include "controller/C_ORBE_Controller_Library.h"
#include "controller/Self_Test_Functions.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace Pelgar::ORBE;
using namespace Pelgar::ORBE::test;
using Headstage = Virtual_Headstage;

constexpr unsigned port = 2;
constexpr std::uint64_t block = 1792;

class Stream_Self_Tests : public Box_Fixture {
protected:
    // A box whose test signal lies in this bin of 1,024.
    void open_with_tone(double bin) {
        auto options = stream_options();
        options.tone_frequency = recording::frequency_of_bin(bin);
        use_box(options);
        open_box();
    }

    void use_box(const recording::Recording_Options& options) {
        m_box = std::make_shared<Virtual_Box>(options);
        *npoe_adapter::g_controller_factory = [box = m_box](bool) {
            return std::make_shared<ORBE_Controller_Library>(std::make_shared<Virtual_Box_Controller>(box),
                                                             false);
        };
    }

    void open_box() {
        open();
        EXPECT_EQ(Neuropixels::openPort(slot, port + 1), Neuropixels::SUCCESS);
        headstage().forget_frames();
        m_box->forget_accesses();
    }

    ORBE_Controller_Library& controller() { return *npoe_adapter::current_controller(); }

    Headstage& headstage() { return m_box->headstage(port); }

    Printed psb_test(bool result) {
        bool passed = !result;
        const Printed printed = printed_by([&] { passed = controller().bist_PSB(port); });
        EXPECT_EQ(passed, result) << printed.out;
        return printed;
    }

    Printed signal_test(bool result) {
        bool passed = !result;
        const Printed printed = printed_by([&] { passed = controller().bist_Signal(port); });
        EXPECT_EQ(passed, result) << printed.out;
        return printed;
    }

    // Lets the next bring-up in this mode lose the write of the mode register.
    void lose_mode(E_ORBE_Init_Config init_config, std::uint8_t mode) {
        // The first bring-up powers the probe; later ones are all alike.
        for (int bring_up = 0; bring_up < 2; ++bring_up) {
            headstage().forget_frames();
            ASSERT_TRUE(controller().probe_init_part_2(port, init_config));
        }
        const auto frames = headstage().frames();
        const Link_Frame write{0x79, Headstage::probe_asic, 0x00, 1, mode};
        const auto at = std::find(frames.begin(), frames.end(), write);
        ASSERT_NE(at, frames.end());
        headstage().forget_frames();
        headstage().fail_once(static_cast<std::size_t>(at - frames.begin()) + 1, Link_Fault::lost_write);
    }

    // A box that fails is left alone.
    void expect_port_left_on() {
        EXPECT_EQ(m_box->value(Virtual_Box::configuration) & 0xFU, 1U << port);
        EXPECT_EQ(m_log.count(-1, skipped), 1);
    }

    static constexpr const char* skipped =
        "Skipping commands for disabling streams ( m_current_error_level > 0 )";

    void expect_exact_acquisition() {
        ASSERT_EQ(Neuropixels::init(slot, port + 1, 1), Neuropixels::SUCCESS);
        const std::uint64_t before = m_box->stream().ticks();
        Stream_Check check(m_box->stream());
        ASSERT_EQ(Neuropixels::start_acquisition(slot, 1), Neuropixels::SUCCESS);
        EXPECT_TRUE(check.run_to(before + 2 * block + 600));
        check.finish();
        EXPECT_EQ(check.differences(), std::vector<std::string>{});
        for (unsigned number = 1; number <= 4; ++number) {
            EXPECT_EQ(check.packets(number), 2 * block / 12);
        }
        EXPECT_EQ(Neuropixels::stop_acquisition(slot, 1), Neuropixels::SUCCESS);
        m_box->stream().set_limit(DMA_Source::unlimited);
    }

    static std::size_t queued_packets() {
        std::size_t count = npoe_adapter::current_rhd_converter()->queue().size();
        for (int number = 1; number <= 4; ++number) {
            count += npoe_adapter::current_np_converter(number)->queue().size();
        }
        return count;
    }

    // Takes what a host would still find after its acquisition.
    static void empty_queues() {
        const auto empty = [](auto& queue) {
            while (queue.size() != 0) {
                queue.pop();
            }
        };
        empty(npoe_adapter::current_rhd_converter()->queue());
        for (int number = 1; number <= 4; ++number) {
            empty(npoe_adapter::current_np_converter(number)->queue());
        }
    }

    void expect_streams_off() {
        EXPECT_EQ(m_box->value(Virtual_Box::configuration) & 0xFU, 0U);
        EXPECT_EQ(m_box->value(RHD_Interface_Model::enabled_streams), 0U);
    }
};

TEST_F(Stream_Self_Tests, PatternOfTheProbePassesThePSBTest) {
    open_box();
    const Printed printed = psb_test(true);
    EXPECT_EQ(occurrences(printed.out, "failed_comparison_count : 0\n"), 1U);
    EXPECT_EQ(occurrences(printed.out, "End of Bist PSB test\n"), 1U);
    EXPECT_EQ(m_log.count(0, "Already prepard for streaming"), 1);
    EXPECT_EQ(m_box->stream().reads(), 100U);
    // 100 MiB of the port's rows, and the whole blocks in them that another row follows.
    const std::uint64_t sets = ((100ULL << 20U) / 16 - 1) / 65 / block * block;
    EXPECT_EQ(occurrences(printed.out, "successful_comparison_count : " + std::to_string(sets) + "\n"), 1U);
    EXPECT_EQ(headstage().value(Headstage::probe_asic, 0x00), 0x50) << "the probe is left in its test mode";
    expect_streams_off();
}

TEST_F(Stream_Self_Tests, ProbeThatDoesNotSendThePatternFailsThePSBTest) {
    open_box();
    lose_mode(E_ORBE_Init_Config::psb_test, 0x50);
    const Printed printed = psb_test(false);
    EXPECT_EQ(occurrences(printed.out, "successful_comparison_count : 0\n"), 1U);
    EXPECT_GT(occurrences(printed.err, "PSB test ch_data compare failed at : "), block);
    expect_streams_off();
}

TEST_F(Stream_Self_Tests, SignalOfTheProbePassesTheSignalTest) {
    open_with_tone(40);
    const Printed printed = signal_test(true);
    EXPECT_EQ(occurrences(printed.out, ", peek frq = 1183.71 Hz , peek mag : "), 384U);
    EXPECT_EQ(occurrences(printed.out, "Frq check passed at trial number : 0\n"), 1U);
    EXPECT_EQ(headstage().value(Headstage::probe_asic, 0x02), 0x90);
    expect_streams_off();
}

TEST_F(Stream_Self_Tests, SignalOfAWrongFrequencyFailsTheSignalTest) {
    open_with_tone(38);
    const Printed printed = signal_test(false);
    EXPECT_EQ(occurrences(printed.out, ", peek frq = 1124.53 Hz , peek mag : "), 5U * 384U);
    EXPECT_EQ(occurrences(printed.out, "Frq check failed\n"), 5U * 384U);
    expect_streams_off();
}

TEST_F(Stream_Self_Tests, ProbeThatDoesNotSendTheSignalFailsTheSignalTest) {
    open_box();
    lose_mode(E_ORBE_Init_Config::pixel_test, 0x60);
    const Printed printed = signal_test(false);
    EXPECT_GT(occurrences(printed.out, "Frq check failed\n"), 1000U);
}

TEST_F(Stream_Self_Tests, BringUpThatFailsEndsBothTests) {
    open_box();
    headstage().fail_from(1, Link_Fault::silence);
    EXPECT_EQ(occurrences(psb_test(false).out + signal_test(false).out, "Saving stream listeners\n"), 0U);
    EXPECT_EQ(m_log.count(-2, "probe_init_part_2 failed"), 2);
    EXPECT_EQ(m_box->stream().reads(), 0U);
}

TEST_F(Stream_Self_Tests, AcquisitionAfterATestOfADeadHeadstageIsExact) {
    open_box();
    headstage().fail_from(1, Link_Fault::silence);
    EXPECT_EQ(Neuropixels::bistPSB(slot, port + 1, 0), Neuropixels::FAILED);
    EXPECT_EQ(error_level(), Error_Level::probe_link);
    Stream_Check check(m_box->stream());
    ASSERT_EQ(Neuropixels::start_acquisition(slot, 1), Neuropixels::SUCCESS);
    EXPECT_TRUE(check.run_to(block + 600));
    check.finish();
    EXPECT_EQ(check.differences(), std::vector<std::string>{});
    for (unsigned number = 1; number <= 4; ++number) {
        EXPECT_EQ(check.packets(number), block / 12);
    }
    m_box->stream().set_limit(DMA_Source::unlimited);
    EXPECT_EQ(Neuropixels::stop_acquisition(slot, 1), Neuropixels::SUCCESS);
    EXPECT_EQ(m_log.count(-1, skipped), 1);
    EXPECT_EQ(m_box->value(Virtual_Box::configuration) & 0xFU, 0xFU) << "a box that fails is left alone";
    EXPECT_EQ(Neuropixels::bistPSB(slot, port + 1, 0), Neuropixels::FAILED);
    EXPECT_EQ(m_log.count("bistPSB needs the stream, which an acquisition uses"), 0);
}

TEST_F(Stream_Self_Tests, FailingReadEndsThePSBTest) {
    open_box();
    m_box->stream().fail_read(1, {DMA_Read_Fault::Kind::fails});
    const Printed printed = psb_test(false);
    EXPECT_EQ(occurrences(printed.out, "successful_comparison_count : 0\nfailed_comparison_count : 0\n"
                                       "Restoring stream listeners\nEnd of Bist PSB test\n"),
              1U);
    EXPECT_EQ(m_box->stream().reads(), 1U);
    EXPECT_EQ(error_level(), Error_Level::dma_pump);
    expect_port_left_on();
}

TEST_F(Stream_Self_Tests, ReadThatFailsLaterLeavesWhatCameBefore) {
    open_box();
    m_box->stream().fail_read(4, {DMA_Read_Fault::Kind::fails});
    const Printed printed = psb_test(true);
    EXPECT_EQ(occurrences(printed.out, "successful_comparison_count : 1792\n"), 1U);
}

TEST_F(Stream_Self_Tests, FailingReadEndsTheSignalTest) {
    open_box();
    m_box->stream().fail_read(2, {DMA_Read_Fault::Kind::fails});
    const Printed printed = signal_test(false);
    EXPECT_EQ(occurrences(printed.out, "Restoring stream listeners\n"), 1U);
    EXPECT_EQ(m_box->stream().reads(), 2U);
    EXPECT_EQ(m_log.count(-2, "signal test : 0 AP samples instead of 1024"), 1);
    expect_port_left_on();
}

TEST_F(Stream_Self_Tests, StreamThatDriesUpEndsTheSignalTest) {
    open_box();
    m_box->stream().set_observer(
        [&](std::span<const std::uint8_t>) { m_box->lock_at_look(port, std::nullopt); });
    signal_test(false);
    EXPECT_EQ(m_box->stream().reads(), 1U + 1U + 100U) << "a whole read, the rest of its tick, empty ones";
    EXPECT_EQ(m_log.count(-2, "signal test : 0 AP samples instead of 1024"), 1);
    expect_streams_off();
}

TEST_F(Stream_Self_Tests, StreamThatNeverBeginsEndsTheSignalTest) {
    open_box();
    for (std::uint64_t read = 1; read <= 200; ++read) {
        m_box->stream().fail_read(read, {DMA_Read_Fault::Kind::short_read, 0});
    }
    signal_test(false);
    EXPECT_EQ(m_box->stream().reads(), 100U);
    EXPECT_EQ(m_log.count(-2, "signal test : 0 AP samples instead of 1024"), 1);
}

TEST_F(Stream_Self_Tests, ShortAndEmptyReadsDoNotEndTheSignalTest) {
    open_with_tone(40);
    constexpr std::uint64_t faulty = 500;
    for (std::uint64_t read = 1; read <= faulty; ++read) {
        // Now and then a row, and 99 empty reads behind each other.
        const std::uint32_t bytes = read % 100 == 0 ? 16 : 0;
        m_box->stream().fail_read(read, {DMA_Read_Fault::Kind::short_read, bytes});
    }
    for (std::uint64_t read = faulty + 1; read <= 2 * faulty; ++read) {
        m_box->stream().fail_read(read, {DMA_Read_Fault::Kind::short_read, 256});
    }
    const Printed printed = signal_test(true);
    EXPECT_EQ(occurrences(printed.out, "Frq check passed at trial number : 0\n"), 1U);
    EXPECT_GT(m_box->stream().reads(), 2 * faulty);
}

TEST_F(Stream_Self_Tests, FailingReadEndsTheSignalTestAlsoWithSomeSamplesThere) {
    // The first block of the port delivers 600 samples, up to a super frame without its flag.
    auto options = stream_options();
    options.faults = {{recording::Fault_Kind::missing_flag, port, 600, 1}};
    use_box(options);
    open_box();
    m_box->stream().fail_read(3, {DMA_Read_Fault::Kind::fails});
    signal_test(false);
    EXPECT_EQ(m_box->stream().reads(), 3U);
    EXPECT_EQ(m_log.count(-2, "signal test : 600 AP samples instead of 1024"), 1);
}

TEST_F(Stream_Self_Tests, RowsThatCannotBeSwitchedOnLeaveTheHostItsListeners) {
    open_box();
    // The port's rows on, behind a bring-up that has routed the link to the port.
    constexpr std::uint32_t rows_on = 0x5C0 | port << 4U | 1U << port;
    m_box->fail_write(Virtual_Box::configuration, rows_on);
    Printed printed = printed_by([&] {
        EXPECT_EQ(text_thrown_by<std::runtime_error>([&] { execute_psb_test(controller(), port); }),
                  "register space lost");
    });
    EXPECT_EQ(occurrences(printed.out, "Restoring stream listeners\n"), 1U);
    EXPECT_EQ(occurrences(printed.out, "End of Bist PSB test\n"), 0U);
    m_box->fail_write(Virtual_Box::configuration, rows_on);
    printed = printed_by([&] { EXPECT_FALSE(execute_bist_signal_test(controller(), port)); });
    EXPECT_EQ(occurrences(printed.out, "Restoring stream listeners\n"), 1U);
    EXPECT_EQ(
        occurrences(printed.err, "Exception catched at execute_bist_signal_test : register space lost\n"),
        1U);
    expect_streams_off();
    expect_exact_acquisition();
}

TEST_F(Stream_Self_Tests, AcquisitionAfterTheTestsIsExact) {
    open_box();
    psb_test(true);
    signal_test(true);
    expect_exact_acquisition();
    psb_test(true);
}

TEST_F(Stream_Self_Tests, NeitherAcquisitionSeesAnythingOfTheTestsBetweenThem) {
    open_box();
    {
        Stream_Check check(m_box->stream());
        ASSERT_EQ(Neuropixels::start_acquisition(slot, 1), Neuropixels::SUCCESS);
        // One block is no whole number of packets.
        EXPECT_TRUE(check.run_to(block + 600));
        check.finish();
        EXPECT_EQ(check.differences(), std::vector<std::string>{});
        EXPECT_EQ(Neuropixels::stop_acquisition(slot, 1), Neuropixels::SUCCESS);
    }
    m_box->stream().set_limit(DMA_Source::unlimited);
    controller().wait_until_delivered();
    empty_queues();
    // The RHD interface goes on sending: its frames are in the tests' data too.
    psb_test(true);
    signal_test(true);
    EXPECT_EQ(queued_packets(), 0U);
    ASSERT_EQ(Neuropixels::init(slot, port + 1, 1), Neuropixels::SUCCESS);
    const std::uint64_t before = m_box->stream().ticks();
    Stream_Check check(m_box->stream(), Stream_Check::ADC_Status::not_compared);
    check.skip_first_packets();
    ASSERT_EQ(Neuropixels::start_acquisition(slot, 1), Neuropixels::SUCCESS);
    EXPECT_TRUE(check.run_to(before + 2 * block + 600));
    check.finish();
    EXPECT_EQ(check.differences(), std::vector<std::string>{});
    for (unsigned number = 1; number <= 4; ++number) {
        EXPECT_GE(check.packets(number), 2 * block / 12);
    }
    EXPECT_GT(check.adc_packets(), 2 * block);
    EXPECT_EQ(Neuropixels::stop_acquisition(slot, 1), Neuropixels::SUCCESS);
}

TEST_F(Stream_Self_Tests, TestsAreRefusedWhileAnAcquisitionRuns) {
    open_box();
    Stream_Check check(m_box->stream());
    ASSERT_EQ(Neuropixels::start_acquisition(slot, 1), Neuropixels::SUCCESS);
    EXPECT_FALSE(controller().bist_PSB(port));
    EXPECT_FALSE(controller().bist_Signal(port));
    EXPECT_EQ(m_log.count(-2, "bist_PSB needs the stream, which is in use"), 1);
    EXPECT_TRUE(headstage().frames().empty());
    EXPECT_TRUE(check.run_to(block + 600));
    check.finish();
    EXPECT_EQ(check.differences(), std::vector<std::string>{});
}

} // namespace
