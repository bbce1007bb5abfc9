#include "back_ends/DMA_Read_Request.h"

#include "Printed.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <stdexcept>
#include <vector>

namespace {

using Pelgar::ORBE::DMA_Read_Request;
using Pelgar::ORBE::test::printed_by;
using Pelgar::ORBE::test::text_thrown_by;

// A device that delivers at most `piece` bytes a call: 1, 2, 3, ...
class Piecemeal_Device {
public:
    explicit Piecemeal_Device(std::uint32_t piece) : m_piece(piece) {}

    std::uint32_t operator()(std::uint8_t* buffer, std::uint32_t size) {
        m_asked.push_back(size);
        const std::uint32_t count = size < m_piece ? size : m_piece;
        for (std::uint32_t i = 0; i < count; ++i) {
            buffer[i] = ++m_last;
        }
        return count;
    }

    const std::vector<std::uint32_t>& asked() const { return m_asked; }

private:
    std::uint32_t m_piece;
    std::uint8_t m_last = 0;
    std::vector<std::uint32_t> m_asked;
};

TEST(DMAReadRequest, RequestOfSizeZeroReadsNothing) {
    Piecemeal_Device device(4);
    const DMA_Read_Request request;
    EXPECT_EQ(request.fill(true, std::ref(device)), 0U);
    EXPECT_EQ(request.fill(false, std::ref(device)), 0U);
    EXPECT_TRUE(device.asked().empty());
}

TEST(DMAReadRequest, PiecesFollowOneAnotherUntilTheBufferIsFull) {
    Piecemeal_Device device(4);
    std::vector<std::uint8_t> buffer(11, 0xEE);
    const DMA_Read_Request request{buffer.data(), 10, 0, 1000};
    const auto printed = printed_by([&] { EXPECT_EQ(request.fill(true, std::ref(device)), 10U); });
    EXPECT_EQ(buffer, (std::vector<std::uint8_t>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 0xEE}));
    EXPECT_EQ(device.asked(), (std::vector<std::uint32_t>{10, 6, 2}));
    EXPECT_EQ(printed.out, "");
    EXPECT_EQ(printed.err, "");
}

TEST(DMAReadRequest, IncompleteReadStopsAfterOnePassWhateverItBrought) {
    std::vector<std::uint8_t> buffer(10);
    const DMA_Read_Request request{buffer.data(), 10, 0, 0};
    for (const std::uint32_t piece : {0U, 4U, 10U}) {
        Piecemeal_Device device(piece);
        EXPECT_EQ(request.fill(false, std::ref(device)), piece);
        EXPECT_EQ(device.asked(), (std::vector<std::uint32_t>{10}));
    }
}

TEST(DMAReadRequest, FiftyPassesAreNotWorthAWordFiftyOneAre) {
    std::vector<std::uint8_t> buffer(51);
    Piecemeal_Device device(1);
    const DMA_Read_Request fifty{buffer.data(), 50, 0, 0};
    const auto quiet = printed_by([&] { EXPECT_EQ(fifty.fill(true, std::ref(device)), 50U); });
    EXPECT_EQ(quiet.out, "");
    const DMA_Read_Request fifty_one{buffer.data(), 51, 0, 0};
    const auto printed = printed_by([&] { EXPECT_EQ(fifty_one.fill(true, std::ref(device)), 51U); });
    EXPECT_EQ(printed.out, "51 read_issue_counter.\n");
    EXPECT_EQ(printed.err, "");
}

TEST(DMAReadRequest, HundredThousandPassesAreStillInTime) {
    std::vector<std::uint8_t> buffer(100'000);
    Piecemeal_Device device(1);
    const DMA_Read_Request request{buffer.data(), 100'000, 0, 0};
    const auto printed = printed_by([&] { EXPECT_EQ(request.fill(true, std::ref(device)), 100'000U); });
    EXPECT_EQ(printed.out, "100000 read_issue_counter.\n");
    EXPECT_EQ(printed.err, "");
}

TEST(DMAReadRequest, TrickleIsGivenUpAfter100001PassesWithWhatCame) {
    std::vector<std::uint8_t> buffer(200'000);
    Piecemeal_Device device(1);
    const DMA_Read_Request request{buffer.data(), 200'000, 0, 0};
    const auto printed = printed_by([&] { EXPECT_EQ(request.fill(true, std::ref(device)), 100'001U); });
    EXPECT_EQ(device.asked().size(), 100'001U);
    EXPECT_EQ(printed.out, "100001 read_issue_counter.\n");
    EXPECT_EQ(printed.err, "Read timeout.\n");
}

TEST(DMAReadRequest, FailureOfTheDevicePassesThrough) {
    std::vector<std::uint8_t> buffer(4);
    const DMA_Read_Request request{buffer.data(), 4, 0, 0};
    EXPECT_EQ(text_thrown_by<std::runtime_error>([&] {
                  request.fill(true, [](std::uint8_t*, std::uint32_t) -> std::uint32_t {
                      throw std::runtime_error("c2h transfer failed");
                  });
              }),
              "c2h transfer failed");
}

} // namespace
