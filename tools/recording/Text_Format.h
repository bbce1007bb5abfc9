// Tools, recording library. Formatted text for the tables that people read. Any thread; never blocks.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

namespace Pelgar::ORBE::recording {

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

} // namespace Pelgar::ORBE::recording
