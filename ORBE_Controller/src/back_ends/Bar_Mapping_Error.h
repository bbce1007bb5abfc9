// Layer: device controller. What is said when the register BAR cannot be mapped. Any thread.
#pragma once

#include <cstdint>

namespace Pelgar::ORBE {

// The message of a mapping that failed with this error code of the system, GetLastError() on Windows and
// errno on Linux: "map bar ioctl failed!" without its first `error` characters.
const char* bar_mapping_error_text(std::uint32_t error);

} // namespace Pelgar::ORBE
