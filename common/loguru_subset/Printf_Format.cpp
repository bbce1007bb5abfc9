#include "Printf_Format.h"

#include <array>
#include <cstddef>
#include <cstdio>

namespace loguru::detail {

std::string format_text(const char* format, std::va_list arguments) {
    constexpr std::size_t usual_size = 256;
    std::array<char, usual_size> usual{};
    std::va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(usual.data(), usual.size(), format, arguments);
    std::string text;
    if (length < 0) {
        text = format;
    } else if (const auto size = static_cast<std::size_t>(length); size < usual.size()) {
        text.assign(usual.data(), size);
    } else {
        try {
            text.resize(size);
        } catch (...) {
            va_end(again);
            throw;
        }
        // A string has room for the closing zero behind its last character.
        std::vsnprintf(text.data(), size + 1, format, again);
    }
    va_end(again);
    return text;
}

} // namespace loguru::detail
