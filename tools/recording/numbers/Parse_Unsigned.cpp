#include "numbers/Parse_Unsigned.h"

#include <charconv>
#include <stdexcept>
#include <string>

namespace Pelgar::ORBE::recording {

std::uint64_t parse_unsigned(std::string_view text, std::string_view what) {
    std::uint64_t value = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc() || stop != end) {
        throw std::invalid_argument(std::string(what) + " '" + std::string(text) + "' is not a number");
    }
    return value;
}

} // namespace Pelgar::ORBE::recording
