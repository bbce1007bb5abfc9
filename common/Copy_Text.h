// Layer: common. Handing texts to a host's buffer. Any thread; nothing blocks.
#pragma once

#include <cstddef>
#include <string_view>

namespace Pelgar::ORBE {

// Copies a text into a buffer of `length` characters, closing zero included; what does not fit is cut. A null
// or empty buffer is skipped. Returns the number of characters of the whole text, without the closing zero.
std::size_t copy_text(std::string_view text, char* buffer, std::size_t length);

} // namespace Pelgar::ORBE
