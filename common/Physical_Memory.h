// Layer: common. How much memory the machine has. Any thread; never blocks.
#pragma once

#include <cstdint>

namespace Pelgar::ORBE {

// In bytes; 0 when the system does not tell.
std::uint64_t physical_memory();

} // namespace Pelgar::ORBE
