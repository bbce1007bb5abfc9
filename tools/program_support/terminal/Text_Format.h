// Tools, what all programs share. Formatted text for people. Any thread; never blocks.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

namespace Pelgar::ORBE::tools {

// As printf, at most 255 characters.
template <typename... Values>
std::string text_of(const char* format, Values... values) {
    char text[256];
    std::snprintf(text, sizeof(text), format, values...);
    return text;
}

// A 64-bit number as %llu takes it on every platform.
inline unsigned long long wide(std::uint64_t value) {
    return value;
}

// The word that goes with the number, "packet" or "packets".
inline const char* plural(std::uint64_t count, const char* one, const char* many) {
    return count == 1 ? one : many;
}

// Number and word: "1 packet", "2 packets".
inline std::string counted(std::uint64_t count, const char* one, const char* many) {
    return std::to_string(count) + " " + plural(count, one, many);
}

// Breaks lines at blanks, so that none is longer than `width` unless a single word is. What is left of a line
// goes on behind the line's own indentation and `indent` blanks more.
std::string wrapped(std::string_view text, std::size_t width, std::size_t indent = 0);

} // namespace Pelgar::ORBE::tools
