#include "history/Stream_History.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace Pelgar::ORBE::view {

namespace {

constexpr History_Size size{2, 40, 10,
                            20}; // two values a row, 40 rows whole, bins of 10 rows, 200 rows as bins

void append(Stream_History& history, std::uint64_t number) {
    const std::int16_t value = static_cast<std::int16_t>(number);
    const std::int16_t values[] = {value, static_cast<std::int16_t>(-value)};
    history.append(number, values);
}

void append(Stream_History& history, std::uint64_t begin, std::uint64_t end) {
    for (std::uint64_t number = begin; number < end; ++number) {
        append(history, number);
    }
}

std::vector<Extent> extents(const Stream_History& history, const Columns& columns, std::size_t value) {
    std::vector<Extent> result(columns.count);
    history.extents(columns, value, 1, result);
    return result;
}

std::vector<std::uint32_t> lost(const Stream_History& history, const Columns& columns) {
    std::vector<std::uint32_t> result(columns.count);
    history.lost(columns, result);
    return result;
}

} // namespace

TEST(Stream_History, ShowsEachRowWhereItIsStillWhole) {
    Stream_History history(size);
    append(history, 100, 130);
    EXPECT_EQ(extents(history, {120, 1, 3}, 0), (std::vector<Extent>{{120, 120}, {121, 121}, {122, 122}}));
    EXPECT_EQ(extents(history, {120, 4, 2}, 1), (std::vector<Extent>{{-123, -120}, {-127, -124}}));
}

TEST(Stream_History, ShowsBinsForWiderColumnsAndForWhatIsLongAgo) {
    Stream_History history(size);
    append(history, 0, 190);
    EXPECT_EQ(extents(history, {0, 20, 2}, 0), (std::vector<Extent>{{0, 19}, {20, 39}}));
    // Narrower than a bin, and no more whole: the bin that the column lies in.
    EXPECT_EQ(extents(history, {12, 2, 1}, 0), (std::vector<Extent>{{10, 19}}));
}

TEST(Stream_History, ShowsManyValuesAsItShowsEach) {
    constexpr std::size_t width = 300;
    Stream_History history({width, 40, 10, 20});
    std::vector<std::int16_t> row(width);
    for (std::uint64_t number = 0; number < 190; ++number) {
        for (std::size_t value = 0; value < width; ++value) {
            row[value] = static_cast<std::int16_t>(number * 7 % 31 + value * 13 % 101);
        }
        history.append(number, row);
    }
    constexpr std::size_t first = 20;
    constexpr std::size_t count = 260;
    for (const Columns columns : {Columns{150, 3, 13}, Columns{0, 20, 10}, Columns{185, 1, 9}}) {
        std::vector<Extent> all(columns.count * count);
        history.extents(columns, first, count, all);
        for (std::size_t value = 0; value < count; ++value) {
            const auto each = extents(history, columns, first + value);
            for (std::size_t column = 0; column < columns.count; ++column) {
                ASSERT_EQ(all[column * count + value], each[column]) << columns.step << " " << value;
            }
        }
    }
}

TEST(Stream_History, IsToldOfLossesBehindWhichNothingHasCome) {
    Stream_History history(size);
    history.append_lost(100, 5); // to begin with
    EXPECT_EQ(history.begin(), 100U);
    EXPECT_EQ(history.end(), 105U);
    append(history, 105, 110);
    history.append_lost(110, 20);
    history.append_lost(130, 0);
    EXPECT_EQ(lost(history, {100, 1, 7}), (std::vector<std::uint32_t>{1, 1, 1, 1, 1, 0, 0}));
    EXPECT_EQ(lost(history, {100, 10, 3}), (std::vector<std::uint32_t>{5, 10, 10}));
    EXPECT_EQ(extents(history, {100, 10, 2}, 0), (std::vector<Extent>{{105, 109}, Extent()}));
    history.append_lost(130, 1000); // longer than what is remembered
    EXPECT_EQ(history.end(), 1130U);
    EXPECT_EQ(lost(history, {1000, 10, 13}), std::vector<std::uint32_t>(13, 10));
}

TEST(Stream_History, HasNothingBeforeItsBeginningAndBehindItsEnd) {
    Stream_History history(size);
    append(history, 105, 115);
    EXPECT_EQ(extents(history, {90, 10, 4}, 0),
              (std::vector<Extent>{Extent(), {105, 109}, {110, 114}, Extent()}));
    EXPECT_EQ(lost(history, {90, 10, 4}), (std::vector<std::uint32_t>{0, 0, 0, 0}));
}

TEST(Stream_History, CountsWhatIsLostAndShowsNothingThere) {
    Stream_History history(size);
    append(history, 100, 113);
    append(history, 127, 140);
    EXPECT_EQ(lost(history, {100, 10, 4}), (std::vector<std::uint32_t>{0, 7, 7, 0}));
    EXPECT_EQ(lost(history, {112, 2, 2}), (std::vector<std::uint32_t>{1, 2}));
    EXPECT_EQ(extents(history, {112, 1, 3}, 0), (std::vector<Extent>{{112, 112}, Extent(), Extent()}));
    EXPECT_EQ(extents(history, {110, 10, 2}, 0), (std::vector<Extent>{{110, 112}, {127, 129}}));
    std::vector<std::int16_t> rows(30);
    EXPECT_EQ(history.latest(0, history.end(), rows), 13U);
    EXPECT_EQ(rows[0], 127);
    EXPECT_EQ(history.latest(0, 110, rows), 10U);
}

TEST(Stream_History, TellsLossesOfNarrowColumnsThatAreLongAgo) {
    Stream_History history(size);
    append(history, 100, 113);
    append(history, 136, 138);
    EXPECT_EQ(lost(history, {110, 2, 5}), (std::vector<std::uint32_t>{0, 1, 2, 2, 2}));
    append(history, 138, 220); // which leaves the bins alone
    EXPECT_EQ(lost(history, {108, 2, 3}), (std::vector<std::uint32_t>{0, 2, 2})); // 7 of 10
    EXPECT_EQ(lost(history, {118, 4, 1}), std::vector<std::uint32_t>{4});         // of two bins
    EXPECT_EQ(lost(history, {120, 2, 5}),
              (std::vector<std::uint32_t>{2, 2, 2, 2, 2})); // and nothing is shown
    EXPECT_EQ(extents(history, {120, 2, 1}, 0), std::vector<Extent>{Extent()});
    EXPECT_EQ(lost(history, {130, 1, 2}), (std::vector<std::uint32_t>{1, 1})); // 6 of 10
    EXPECT_EQ(lost(history, {140, 2, 2}), (std::vector<std::uint32_t>{0, 0}));
}

TEST(Stream_History, ForgetsTheOldestBins) {
    Stream_History history(size);
    append(history, 0, 1000);
    EXPECT_EQ(history.end(), 1000U);
    EXPECT_EQ(history.begin(), 810U);
    EXPECT_EQ(extents(history, {800, 10, 2}, 0), (std::vector<Extent>{Extent(), {810, 819}}));
}

TEST(Stream_History, BeginsAnewBehindALossThatIsLongerThanItself) {
    Stream_History history(size);
    append(history, 0, 50);
    append(history, 5000, 5010);
    EXPECT_EQ(history.begin(), 5000U);
    EXPECT_EQ(lost(history, {4990, 10, 2}), (std::vector<std::uint32_t>{0, 0}));
    history.clear();
    append(history, 7);
    EXPECT_EQ(extents(history, {7, 1, 1}, 0), (std::vector<Extent>{{7, 7}}));
}

TEST(Columns, HaveParts) {
    const Columns part = Columns{100, 5, 20}.part(3, 4);
    EXPECT_EQ(part.begin, 115U);
    EXPECT_EQ(part.end(), 135U);
    EXPECT_EQ(part.count, 4U);
}

TEST(Columns, BeginAtMultiplesOfTheirStepAndOfBins) {
    const Columns narrow = Columns::ending_at(1003, 100, 25, 30);
    EXPECT_EQ(narrow.step, 4U);
    EXPECT_EQ(narrow.begin % 4, 0U);
    EXPECT_GE(narrow.end(), 1003U);
    EXPECT_LT(narrow.end(), 1003U + 4U);
    EXPECT_EQ(narrow.count, 25U);
    const Columns wide = Columns::ending_at(100'000, 30'000, 700, 30);
    EXPECT_EQ(wide.step, 60U);
    EXPECT_EQ(wide.count, 500U);
    EXPECT_EQ(wide.end(), 100'020U);
    const Columns first = Columns::ending_at(90, 30'000, 700, 30);
    EXPECT_EQ(first.begin, 0U);
    EXPECT_EQ(first.count, 2U);
}

} // namespace Pelgar::ORBE::view
