#include "common/Checked_Index.h"

#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>
#include <string>

namespace {

using Pelgar::ORBE::checked_at;

template <typename Array>
std::string refusal(Array& elements, std::size_t index) {
    try {
        checked_at(elements, index);
        return "taken";
    } catch (const std::out_of_range& refused) {
        return refused.what();
    }
}

TEST(Checked_Index, EveryElementIsReached) {
    std::array<int, 3> elements{4, 5, 6};
    const std::array<int, 3>& constant = elements;
    for (std::size_t i = 0; i < elements.size(); ++i) {
        EXPECT_EQ(&checked_at(elements, i), &elements[i]);
        EXPECT_EQ(&checked_at(constant, i), &elements[i]);
    }
}

TEST(Checked_Index, EveryOtherIndexIsRefused) {
    std::array<int, 3> elements{};
    const std::array<int, 3>& constant = elements;
    for (const std::size_t index :
         {std::size_t{3}, std::size_t{4}, std::numeric_limits<std::size_t>::max()}) {
        EXPECT_EQ(refusal(elements, index), "invalid array<T, N> subscript");
        EXPECT_EQ(refusal(constant, index), "invalid array<T, N> subscript");
    }
}

} // namespace
