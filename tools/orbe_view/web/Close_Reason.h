// Program orbe-view, web. Why a connection is ended, as its last frame tells it. Any thread; nothing blocks.
#pragma once

#include <cstddef>
#include <string>

namespace Pelgar::ORBE::view {

// So much fits into the frame beside the code.
inline constexpr std::size_t most_close_reason_bytes = 123;

// As much of the reason, which is UTF-8, as fits, without a character that is cut: browsers take that for a
// broken connection.
std::string close_reason_of(const std::string& reason);

} // namespace Pelgar::ORBE::view
