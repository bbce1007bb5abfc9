#include "sources/Sample_Finder.h"

#include "generator/Recording_Generator.h"

#include <gtest/gtest.h>

#include <vector>

namespace Pelgar::ORBE::view {

namespace {

using namespace recording;

// Of a port alone: 1008 super frames and 16 rows.
constexpr std::uint64_t super_frames_of_piece = piece_bytes / row_bytes / rows_per_super_frame;

std::vector<std::uint8_t> recording_of(std::uint64_t super_frames, std::vector<unsigned> ports = {1}) {
    Recording_Options options;
    options.super_frames = super_frames;
    options.ports = std::move(ports);
    options.rhd = false;
    return make_recording(options);
}

// Word `word` of super frame `super_frame`, in a recording of one port.
std::uint8_t* word_of(std::vector<std::uint8_t>& bytes, std::size_t super_frame, std::size_t word) {
    return bytes.data() + (super_frame * rows_per_super_frame + word / row_words) * row_bytes +
           row_header_bytes + word % row_words * sizeof(std::uint16_t);
}

std::vector<Sample_Finder::Places> find_all(const std::vector<std::uint8_t>& bytes) {
    Sample_Finder finder;
    std::vector<Sample_Finder::Places> all;
    for (std::size_t at = 0; at < bytes.size(); at += piece_bytes) {
        all.push_back(finder.find(std::span(bytes).subspan(at, std::min(bytes.size() - at, piece_bytes))));
    }
    return all;
}

void expect_place(const std::optional<Sample_Finder::Place>& place, std::uint64_t number, std::uint64_t end) {
    ASSERT_TRUE(place);
    EXPECT_EQ(place->number, number);
    EXPECT_EQ(place->end, end);
}

} // namespace

TEST(Sample_Finder, FindsTheFirstWholeSuperFrameOfEachPiece) {
    const auto places = find_all(recording_of(2500));
    ASSERT_EQ(places.size(), 3U);
    expect_place(places[0][0], 0, super_frames_of_piece);
    // One has begun in the piece before.
    expect_place(places[1][0], super_frames_of_piece + 1, 2016);
    expect_place(places[2][0], 2017, 2500);
    EXPECT_FALSE(places[0][1]);
}

TEST(Sample_Finder, FindsEveryPort) {
    const auto places = find_all(recording_of(600, {1, 3, 4}));
    for (const std::size_t port : {0U, 2U, 3U}) {
        expect_place(places[0][port], 0, 336);
        expect_place(places[1][port], 337, 600);
    }
    EXPECT_FALSE(places[1][1]);
}

// Frames of twenty words, in rows of seven.
TEST(Sample_Finder, FindsTheInputsByTheirStamps) {
    Recording_Options options;
    options.super_frames = 50'000;
    options.ports = {};
    options.faults = {parse_fault("lost-row:rhd@100+20")};
    auto places = find_all(make_recording(options));
    ASSERT_EQ(places.size(), 3U);
    constexpr std::uint64_t rows = piece_bytes / row_bytes;
    const std::uint64_t begin =
        ((rows + 20) * row_words + 19) / 20; // the first that begins in the second piece
    expect_place(places[0][rhd_stream], 0, (rows + 20) * row_words / 20);
    expect_place(places[1][rhd_stream], begin, (2 * rows + 20) * row_words / 20);
    // The last frame does not fill its last row.
    expect_place(places[2][rhd_stream], ((2 * rows + 20) * row_words + 19) / 20, 49'999);
    EXPECT_FALSE(places[0][0]);
}

// As it would be if a bit of it had flipped: a counter that is seconds away.
TEST(Sample_Finder, DoesNotBelieveOneDamagedCounter) {
    auto bytes = recording_of(2500);
    *(word_of(bytes, 1009, word_of_value(counter_high_index)) + 1) ^= 2U; // its ninth bit
    auto places = find_all(bytes);
    expect_place(places[1][0], 1010, 2016);
    expect_place(places[2][0], 2017, 2500);
    // Nor one in the middle, nor a super frame with a wrong tag.
    *word_of(bytes, 1500, 12 * words_per_frame + word_of_value(counter_low_index)) ^= 1U;
    *(word_of(bytes, 1010, 77) + 1) ^= 0x80U;
    places = find_all(bytes);
    expect_place(places[1][0], 1011, 2016);
    expect_place(places[2][0], 2017, 2500);
}

TEST(Sample_Finder, CountsWhatIsLost) {
    auto bytes = recording_of(4000);
    // 1000 super frames, out of the middle of a piece.
    const auto begin = bytes.begin() + static_cast<std::ptrdiff_t>(200 * rows_per_super_frame * row_bytes);
    bytes.erase(begin, begin + static_cast<std::ptrdiff_t>(1000 * rows_per_super_frame * row_bytes));
    const auto places = find_all(bytes);
    expect_place(places[0][0], 0, 2008);
    expect_place(places[1][0], 2009, 3016);
}

TEST(Sample_Finder, LetsAProbeGoOnThatBeginsAnew) {
    auto bytes = recording_of(1500);
    const auto again = recording_of(1000);
    bytes.insert(bytes.end(), again.begin(), again.end());
    const auto places = find_all(bytes);
    expect_place(places[1][0], 1009, 2016);
    expect_place(places[2][0], 2017, 2500);
}

// Behind a lost row the decoder takes nothing more of its block.
TEST(Sample_Finder, GoesOnWithTheNextBlockBehindALostRow) {
    auto bytes = recording_of(2500);
    const auto begin =
        bytes.begin() + static_cast<std::ptrdiff_t>((1009 * rows_per_super_frame + 7) * row_bytes);
    bytes.erase(begin, begin + row_bytes);
    expect_place(find_all(bytes)[1][0], 1009 + 120 + 1, 2016);
}

} // namespace Pelgar::ORBE::view
