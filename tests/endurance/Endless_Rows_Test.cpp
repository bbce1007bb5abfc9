// The rows beside what the recording tools make of them, which know nothing of numbered samples.
#include "ADC_Judge.h"
#include "Endless_Rows.h"
#include "Port_Judge.h"

#include "expectation/ADC_Model.h"
#include "expectation/Port_Model.h"
#include "stream_format/Row_View.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

namespace {

using namespace Pelgar::ORBE::test;
using namespace Pelgar::ORBE::recording;

constexpr std::array<bool, 4> two_ports{true, false, true, false};

std::vector<std::uint8_t> rows_of(const Endless_Options& options, std::uint64_t ticks) {
    Endless_Rows rows(options);
    Stream_Enables enables;
    enables.ports = two_ports;
    enables.rhd_streams = 0;
    std::vector<std::uint8_t> bytes;
    for (std::uint64_t tick = 0; tick < ticks; ++tick) {
        rows.make_tick(enables);
        const auto made = rows.take(piece_bytes);
        bytes.insert(bytes.end(), made.begin(), made.end());
    }
    return bytes;
}

// The first complaint about a port's packets, and how many there were.
std::string judged(const std::vector<std::uint8_t>& bytes, const Endless_Options& options, unsigned port,
                   std::uint64_t& packets) {
    Port_Model model(port);
    Port_Judge judge(Packet_Layout::own, options.seed, port, options.numbers);
    const std::span<const std::uint8_t> all(bytes);
    for (std::size_t at = 0; at + piece_bytes <= all.size(); at += piece_bytes) {
        model.feed(all.subspan(at, piece_bytes));
        while (const auto* const packet = model.next()) {
            if (const std::string fault = judge.judge(*packet); !fault.empty()) {
                return fault;
            }
        }
    }
    packets = judge.packets();
    return "";
}

// Past a wrap of the 20-bit counter.
constexpr std::uint64_t ticks = 85'000;

TEST(Endless_Rows, AreWhatTheJudgesExpectOfTheModels) {
    const Endless_Options options;
    const auto bytes = rows_of(options, ticks);
    for (const unsigned port : {1U, 3U}) {
        std::uint64_t packets = 0;
        EXPECT_EQ(judged(bytes, options, port, packets), "");
        EXPECT_GT(packets, 6'900U);
    }
    ADC_Model model;
    ADC_Judge judge(Packet_Layout::own, options.seed, options.numbers);
    model.feed(bytes);
    while (const ADC_Packet* const packet = model.next()) {
        const Neuropixels::PacketInfo info{.Timestamp = 0, .Status = packet->status, .payloadlength = 0};
        ASSERT_EQ(judge.judge(info, packet->samples), "");
    }
    EXPECT_EQ(judge.packets(), ticks - 1) << "the last one's end is in an unfinished row";
}

TEST(Endless_Rows, HaveRowCountersWithoutAGap) {
    const auto bytes = rows_of(Endless_Options(), 2000);
    std::array<std::uint8_t, stream_count> next{};
    const std::size_t given_up = for_each_row(bytes, [&next](const Row_View& row) {
        ASSERT_EQ(row.counter(), next[row.stream()]);
        ++next[row.stream()];
    });
    EXPECT_EQ(given_up, 0U);
}

TEST(Endless_Rows, OneWrongBitIsFound) {
    Endless_Options options;
    options.fault_at = 5000;
    std::uint64_t packets = 0;
    EXPECT_EQ(judged(rows_of(options, 10'000), options, 1, packets),
              "port 1, packet 416 : AP row 9 has the number of sample 5000, but other values");
    EXPECT_EQ(judged(rows_of(options, 10'000), options, 3, packets), "");
}

TEST(Endless_Rows, LostSuperFrameIsFound) {
    const Endless_Options options;
    auto bytes = rows_of(options, 10'000);
    // The first rows of the stream are those of the first super frames alone.
    constexpr std::ptrdiff_t two_super_frames = 2 * rows_per_super_frame * row_bytes;
    bytes.erase(bytes.begin(), bytes.begin() + two_super_frames);
    std::uint64_t packets = 0;
    EXPECT_EQ(judged(bytes, options, 1, packets),
              "port 1, packet 0 : AP row 0 has the number 1 instead of 0");
}

TEST(Endless_Rows, OtherSamplesAreFound) {
    const Endless_Options options;
    Endless_Options others = options;
    others.seed = 2;
    std::uint64_t packets = 0;
    EXPECT_EQ(judged(rows_of(options, 10'000), others, 1, packets),
              "port 1, packet 0 : AP row 0 has the number of sample 0, but other values");
}

} // namespace
