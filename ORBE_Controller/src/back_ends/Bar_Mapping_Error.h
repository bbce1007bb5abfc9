// Layer: device controller (Windows). What is said when the register BAR cannot be mapped. Any thread.
#pragma once

#include <cstdint>

namespace Pelgar::ORBE {

// The message of a mapping that failed with this error code of the system: "map bar ioctl failed!" without
// its first `error` characters.
const char* bar_mapping_error_text(std::uint32_t error);

} // namespace Pelgar::ORBE
