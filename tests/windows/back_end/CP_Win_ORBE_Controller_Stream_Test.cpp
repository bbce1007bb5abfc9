// Reading the stream, on the stand-in driver.
#include "back_ends/CP_Win_ORBE_Controller.h"

#include "Back_End_Fixture.h"
#include "back_ends/Windows_Api.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <numeric>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using Pelgar::ORBE::test::box_driver;
using Pelgar::ORBE::test::printed_by;
using Pelgar::ORBE::test::text_thrown_by;
using Bytes = std::vector<std::uint8_t>;

constexpr std::uint32_t status_io_device_error = 0xC0000185; // ERROR_IO_DEVICE (1117)
constexpr std::uint32_t status_access_denied = 0xC0000022;   // ERROR_ACCESS_DENIED (5)

class CPWinORBEControllerStream : public Pelgar::ORBE::test::Back_End_Fixture {
protected:
    CPWinORBEControllerStream() { open_box(); }

    // Makes box 0 bring so many bytes, 0, 1, 2, ... and answers them.
    static Bytes play(std::size_t size) {
        Bytes bytes(size);
        std::iota(bytes.begin(), bytes.end(), std::uint8_t{0});
        const std::filesystem::path path = "recording.bin";
        std::ofstream(path, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(size));
        box_driver().play(0, path);
        return bytes;
    }

    Bytes& setup(std::size_t size) {
        m_buffer.assign(size, 0xEE);
        EXPECT_TRUE(m_controller->setup_read(m_buffer.data(), static_cast<std::uint32_t>(size), 0, 1000));
        return m_buffer;
    }

    static std::uint64_t reads() { return box_driver().get(0, BOX_READS); }

    Bytes m_buffer;
};

Bytes part(const Bytes& bytes, std::ptrdiff_t begin, std::ptrdiff_t end) {
    return {bytes.begin() + begin, bytes.begin() + end};
}

TEST_F(CPWinORBEControllerStream, ReadOfSizeZeroAsksTheDeviceForNothing) {
    const auto printed = printed_by([&] { EXPECT_EQ(m_controller->read_stream(0, true), 0U); });
    EXPECT_EQ(printed.out, "");
    EXPECT_EQ(printed.err, "");
    EXPECT_EQ(reads(), 0U);
}

TEST_F(CPWinORBEControllerStream, FullBufferTakesOneRead) {
    const Bytes bytes = play(1 << 20);
    const Bytes& buffer = setup(1 << 20);
    const auto printed = printed_by([&] { EXPECT_EQ(m_controller->read_stream(0, true), 1U << 20); });
    EXPECT_EQ(printed.out, "");
    EXPECT_EQ(printed.err, "");
    EXPECT_TRUE(buffer == bytes);
    EXPECT_EQ(reads(), 1U);
}

TEST_F(CPWinORBEControllerStream, IncompleteReadIsExactlyOneRead) {
    const Bytes bytes = play(100);
    const Bytes& buffer = setup(8);
    box_driver().set(0, BOX_READ_LIMIT, 3);
    EXPECT_EQ(m_controller->read_stream(0, false), 3U);
    EXPECT_EQ(buffer, (Bytes{0, 1, 2, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE}));
    EXPECT_EQ(reads(), 1U);
    box_driver().set(0, BOX_READ_LIMIT, 0);
    EXPECT_EQ(m_controller->read_stream(0, false), 0U);
    EXPECT_EQ(reads(), 2U);
}

TEST_F(CPWinORBEControllerStream, CompleteReadPutsShortReadsTogether) {
    const Bytes bytes = play(100);
    const Bytes& buffer = setup(10);
    box_driver().set(0, BOX_READ_LIMIT, 4);
    const auto printed = printed_by([&] { EXPECT_EQ(m_controller->read_stream(0, true), 10U); });
    EXPECT_EQ(buffer, part(bytes, 0, 10));
    EXPECT_EQ(reads(), 3U);
    EXPECT_EQ(printed.out, "");
    EXPECT_EQ(printed.err, "");
}

TEST_F(CPWinORBEControllerStream, EveryReadStartsAtTheBeginningOfTheBuffer) {
    const Bytes bytes = play(100);
    const Bytes& buffer = setup(5);
    EXPECT_EQ(m_controller->read_stream(0, true), 5U);
    EXPECT_EQ(buffer, part(bytes, 0, 5));
    EXPECT_EQ(m_controller->read_stream(0, true), 5U);
    EXPECT_EQ(buffer, part(bytes, 5, 10));
}

TEST_F(CPWinORBEControllerStream, FiftyPassesAreNotReported) {
    const Bytes bytes = play(100);
    const Bytes& buffer = setup(50);
    box_driver().set(0, BOX_READ_LIMIT, 1);
    const auto printed = printed_by([&] { EXPECT_EQ(m_controller->read_stream(0, true), 50U); });
    EXPECT_EQ(printed.out, "");
    EXPECT_EQ(buffer, part(bytes, 0, 50));
}

TEST_F(CPWinORBEControllerStream, FiftyOnePassesAreReported) {
    const Bytes bytes = play(100);
    const Bytes& buffer = setup(51);
    box_driver().set(0, BOX_READ_LIMIT, 1);
    const auto printed = printed_by([&] { EXPECT_EQ(m_controller->read_stream(0, true), 51U); });
    EXPECT_EQ(printed.out, "51 read_issue_counter.\n");
    EXPECT_EQ(printed.err, "");
    EXPECT_EQ(buffer, part(bytes, 0, 51));
    EXPECT_EQ(reads(), 51U);
}

TEST_F(CPWinORBEControllerStream, StreamThatTricklesIsGivenUpAfter100001Passes) {
    const Bytes bytes = play(200'000);
    const Bytes& buffer = setup(150'000);
    box_driver().set(0, BOX_READ_LIMIT, 1);
    const auto printed = printed_by([&] { EXPECT_EQ(m_controller->read_stream(0, true), 100'001U); });
    EXPECT_EQ(printed.out, "100001 read_issue_counter.\n");
    EXPECT_EQ(printed.err, "Read timeout.\n");
    EXPECT_EQ(reads(), 100'001U);
    EXPECT_TRUE(part(buffer, 0, 100'001) == part(bytes, 0, 100'001));
    EXPECT_EQ(buffer[100'001], 0xEE);
}

TEST_F(CPWinORBEControllerStream, FailedReadIsReportedAndThrows) {
    play(100);
    setup(8);
    box_driver().set(0, BOX_READ_STATUS, status_io_device_error);
    for (const bool complete : {true, false}) {
        std::string text;
        const auto printed = printed_by([&] {
            text = text_thrown_by<std::runtime_error>([&] { m_controller->read_stream(0, complete); });
        });
        EXPECT_EQ(text, "c2h transfer failed");
        EXPECT_EQ(printed.err, "ReadFile from device failed: 1117");
        EXPECT_EQ(printed.out, "");
    }
    EXPECT_EQ(reads(), 2U);
    box_driver().set(0, BOX_READ_STATUS, status_access_denied);
    EXPECT_EQ(printed_by([&] { EXPECT_THROW(m_controller->read_stream(0, true), std::runtime_error); }).err,
              "ReadFile from device failed: 5");
}

TEST_F(CPWinORBEControllerStream, ReadFromAClosedConnectionFails) {
    setup(1);
    m_controller->close_driver_connection();
    std::string text;
    const auto printed = printed_by(
        [&] { text = text_thrown_by<std::runtime_error>([&] { m_controller->read_stream(0, false); }); });
    EXPECT_EQ(text, "c2h transfer failed");
    EXPECT_EQ(printed.err, "ReadFile from device failed: 6");
}

} // namespace
