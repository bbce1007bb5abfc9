// Reads of the DMA stream: what they fill, when they wait and how they end.
#include "Virtual_Box_Controller.h"

#include "Printed.h"

#include "generator/Recording_Generator.h"
#include "stream_format/Row_View.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <stdexcept>
#include <thread>
#include <vector>

namespace {

using namespace Pelgar::ORBE;
using namespace Pelgar::ORBE::test;
using Bytes = std::vector<std::uint8_t>;

class Stream : public testing::Test {
protected:
    static constexpr std::uint32_t buffer_size = 64 * 1024;
    static constexpr std::size_t super_frame_bytes = 65 * 16;

    Stream() {
        EXPECT_TRUE(m_controller.open_driver_connection("box", true));
        m_controller.setup_read(m_buffer.data(), buffer_size, 0, 1000);
        m_controller.configurator().set_VLM004_power(true);
        m_controller.configurator().assign_port_4_to_np(true);
    }

    void start_rhd() {
        m_controller.okelly_adapter().set_continous_mode(true);
        m_controller.okelly_adapter().trigger_fsm();
    }

    static recording::Recording_Options options(std::uint64_t super_frames) {
        recording::Recording_Options result;
        result.seed = 5;
        result.super_frames = super_frames;
        return result;
    }

    // One read; its bytes.
    Bytes read(bool complete = true) {
        const std::uint32_t count = m_controller.read_stream(0, complete);
        return {m_buffer.begin(), m_buffer.begin() + count};
    }

    DMA_Source& source() { return m_box->stream(); }

    std::shared_ptr<Virtual_Box> m_box = std::make_shared<Virtual_Box>(options(0));
    Virtual_Box_Controller m_controller{m_box};
    Bytes m_buffer = Bytes(buffer_size);
};

TEST_F(Stream, NothingComesWhileNothingIsOn) {
    EXPECT_EQ(read(), Bytes{});
    m_controller.okelly_adapter().trigger_fsm();
    EXPECT_EQ(read(), Bytes{}) << "the RHD interface needs its continuous mode";
    m_controller.okelly_adapter().set_continous_mode(false);
    m_controller.okelly_adapter().set_continous_mode(true);
    EXPECT_EQ(read(), Bytes{}) << "and then its trigger";
}

TEST_F(Stream, FullBuffersMakeTheStreamOfTheSeed) {
    m_controller.configurator().enable_np_streams({0, 1, 2, 3});
    start_rhd();
    Bytes stream;
    for (int i = 0; i < 5; ++i) {
        const Bytes bytes = read();
        EXPECT_EQ(bytes.size(), buffer_size);
        stream.insert(stream.end(), bytes.begin(), bytes.end());
    }
    Bytes expected = recording::make_recording(options(100));
    ASSERT_GE(expected.size(), stream.size());
    expected.resize(stream.size());
    EXPECT_EQ(stream, expected);
}

TEST_F(Stream, PortsWithoutLockSendNothing) {
    m_box->lock_at_look(1, std::nullopt);
    m_controller.configurator().enable_np_streams({1});
    EXPECT_EQ(read(), Bytes{});
    m_box->lock_at_look(1, 1);
    EXPECT_EQ(read().size(), buffer_size);
}

TEST_F(Stream, RHDFramesCarryTheEnabledStreams) {
    m_controller.okelly_adapter().enable_streams({0, 5});
    start_rhd();
    source().set_limit(7);
    EXPECT_EQ(read().size(), 92U * 16U) << "seven frames of 20 + 2 x 35 + 2 words";
    EXPECT_EQ(source().ticks(), 7U);
}

TEST_F(Stream, IncompleteReadReturnsWhatIsThere) {
    m_controller.configurator().enable_np_streams({0});
    source().set_limit(2);
    EXPECT_EQ(read(false).size(), 2 * super_frame_bytes);
}

TEST_F(Stream, HeldBackReadWaitsForTheLimitToRise) {
    m_controller.configurator().enable_np_streams({0});
    source().set_limit(2);
    std::atomic<bool> returned{false};
    std::thread reader([&] {
        EXPECT_EQ(read().size(), buffer_size);
        returned = true;
    });
    while (!source().is_held_back()) {
        std::this_thread::yield();
    }
    EXPECT_EQ(source().ticks(), 2U);
    EXPECT_FALSE(returned);
    source().set_limit(64);
    reader.join();
    EXPECT_EQ(source().ticks(), 64U);
}

TEST_F(Stream, DisablingTheSourcesEndsAHeldBackRead) {
    m_controller.configurator().enable_np_streams({0, 1});
    source().set_limit(3);
    Bytes got;
    std::thread reader([&] { got = read(); });
    while (!source().is_held_back()) {
        std::this_thread::yield();
    }
    m_controller.configurator().enable_np_streams({});
    reader.join();
    EXPECT_EQ(got.size(), 3 * 2 * super_frame_bytes);
    EXPECT_EQ(read(), Bytes{});
}

TEST_F(Stream, ClosingTheConnectionEndsAHeldBackRead) {
    m_controller.configurator().enable_np_streams({0});
    source().set_limit(0);
    std::thread reader([&] { EXPECT_EQ(read(), Bytes{}); });
    while (source().reads() < 1) {
        std::this_thread::yield();
    }
    m_controller.close_driver_connection();
    reader.join();
}

TEST_F(Stream, FaultsStrikeTheirReadAndLoseNoData) {
    m_controller.configurator().enable_np_streams({0, 1, 2, 3});
    start_rhd();
    source().fail_read(1, {DMA_Read_Fault::Kind::short_read, 4096});
    source().fail_read(2, {DMA_Read_Fault::Kind::fails});
    source().fail_read(3, {DMA_Read_Fault::Kind::short_read, 0});
    Bytes stream = read();
    EXPECT_EQ(stream.size(), 4096U);
    EXPECT_EQ(text_thrown_by<std::runtime_error>([&] { read(); }), "c2h transfer failed");
    EXPECT_EQ(read(), Bytes{});
    const Bytes rest = read();
    EXPECT_EQ(rest.size(), buffer_size);
    stream.insert(stream.end(), rest.begin(), rest.end());
    Bytes expected = recording::make_recording(options(40));
    expected.resize(stream.size());
    EXPECT_EQ(stream, expected);
    EXPECT_EQ(source().reads(), 4U);
}

TEST_F(Stream, ObserverSeesWhatEachReadReturns) {
    Bytes seen;
    source().set_observer(
        [&](std::span<const std::uint8_t> bytes) { seen.insert(seen.end(), bytes.begin(), bytes.end()); });
    EXPECT_EQ(read(), Bytes{});
    m_controller.configurator().enable_np_streams({2});
    Bytes got = read();
    const Bytes second = read();
    got.insert(got.end(), second.begin(), second.end());
    EXPECT_EQ(seen, got);
}

TEST_F(Stream, PowerCycleStartsTheProbeAnew) {
    m_controller.configurator().enable_np_streams({0});
    source().set_limit(1);
    const Bytes first = read(false);
    m_controller.configurator().set_VLM004_power(false);
    m_controller.configurator().set_VLM004_power(true);
    source().set_limit(2);
    const Bytes second = read(false);
    ASSERT_EQ(second.size(), first.size());
    for (std::size_t row = 0; row < first.size(); row += 16) {
        EXPECT_TRUE(std::equal(first.begin() + static_cast<std::ptrdiff_t>(row) + 2,
                               first.begin() + static_cast<std::ptrdiff_t>(row) + 16,
                               second.begin() + static_cast<std::ptrdiff_t>(row) + 2));
    }
}

TEST_F(Stream, RebootEndsTheStreams) {
    m_controller.configurator().enable_np_streams({0});
    start_rhd();
    EXPECT_EQ(read().size(), buffer_size);
    m_controller.foreign_hw_icap().boot(Virtual_Box::neuropixels_flash_address);
    EXPECT_EQ(read(), Bytes{});
    EXPECT_TRUE(m_controller.open_driver_connection("box", true));
    EXPECT_EQ(m_controller.read_register(Virtual_Box::configuration), 0U);
    EXPECT_EQ(read(), Bytes{});
}

TEST_F(Stream, RegistersMayChangeWhileAReadIsUnderWay) {
    constexpr std::uint64_t enough = 100;
    std::size_t rows = 0;
    std::size_t damaged = 0;
    source().set_observer([&](std::span<const std::uint8_t> bytes) {
        damaged += recording::for_each_row(bytes, [&](recording::Row_View) { ++rows; });
    });
    std::atomic<bool> stop{false};
    std::thread reader([&] {
        while (!stop) {
            read();
        }
    });
    while (source().reads() < enough) {
        m_controller.configurator().enable_np_streams({0, 1, 2, 3});
        start_rhd();
        m_controller.read_register(Virtual_Box::pll_locks);
        m_controller.okelly_adapter().set_continous_mode(false);
        m_controller.configurator().enable_np_streams({});
    }
    m_controller.configurator().enable_np_streams({0, 1, 2, 3});
    const std::uint64_t last = source().reads() + 2;
    while (source().reads() < last) {
        std::this_thread::yield();
    }
    stop = true;
    m_controller.configurator().enable_np_streams({});
    reader.join();
    EXPECT_GT(rows, buffer_size / 16U);
    EXPECT_EQ(damaged, 0U);
}

} // namespace
