// Tools, what all programs share. What a program may show where its output goes. Any thread; never blocks.
#pragma once

#include <cstddef>

namespace Pelgar::ORBE::tools::terminal {

// As wide as any text: what does not go to a terminal is not broken.
inline constexpr std::size_t unlimited_width = static_cast<std::size_t>(-1);

// How many characters a line of the terminal behind a file descriptor holds.
std::size_t width(int file_descriptor);

// Whether it is a terminal that takes control sequences, so that a line can be drawn anew.
bool can_redraw(int file_descriptor);

} // namespace Pelgar::ORBE::tools::terminal
