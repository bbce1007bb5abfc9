// Layer: façade, host mode. How much of the stream is moved at once, for data every few milliseconds.
#pragma once

#include <cstdint>

namespace Pelgar::ORBE::npoe_adapter {

// A port alone fills a transfer in 4.2 ms.
inline constexpr std::uint32_t prompt_transfer_bytes = 0x20000;
// 4 ms of a port.
inline constexpr std::uint32_t prompt_block_super_frames = 120;

} // namespace Pelgar::ORBE::npoe_adapter
