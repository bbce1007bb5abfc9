// Tools, recorder. Numbers in metadata: the shortest text that is read as the same number, with a point
// whatever the country. Any thread; nothing blocks.
#pragma once

#include <array>
#include <charconv>
#include <string>

namespace Pelgar::ORBE::recorder {

inline std::string number_text(double number) {
    std::array<char, 32> text{};
    const auto result =
        std::to_chars(text.data(), text.data() + text.size(), number, std::chars_format::fixed);
    return result.ec == std::errc() ? std::string(text.data(), result.ptr) : std::to_string(number);
}

} // namespace Pelgar::ORBE::recorder
