// Layer: common. Bounds-checked access to fixed arrays with one text on every compiler. Called from every
// thread; never blocks.
#pragma once

#include <array>
#include <cstddef>

namespace Pelgar::ORBE {

// Throws std::out_of_range("invalid array<T, N> subscript").
[[noreturn]] void throw_invalid_array_subscript();

// The element, or std::out_of_range("invalid array<T, N> subscript") when `index` is N or more.
template <typename T, std::size_t N>
T& checked_at(std::array<T, N>& elements, std::size_t index) {
    if (index >= N) {
        throw_invalid_array_subscript();
    }
    return elements[index];
}

template <typename T, std::size_t N>
const T& checked_at(const std::array<T, N>& elements, std::size_t index) {
    if (index >= N) {
        throw_invalid_array_subscript();
    }
    return elements[index];
}

} // namespace Pelgar::ORBE
