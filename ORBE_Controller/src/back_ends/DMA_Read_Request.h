// Layer: device controller. Where the drivers' back-ends put the bytes of the DMA stream, and the loop that
// fills it. Set up on the host's threads before the stream runs, and between two reads on the pump thread,
// which fills it.
#pragma once

#include <cstdint>
#include <functional>

namespace Pelgar::ORBE {

struct DMA_Read_Request {
    // Reads up to `size` bytes into `buffer` and returns their number, which may be 0. Throws when the device
    // fails.
    using Read_Some = std::function<std::uint32_t(std::uint8_t* buffer, std::uint32_t size)>;

    std::uint8_t* buffer = nullptr;
    std::uint32_t size = 0; // in bytes
    std::uint8_t flag = 0;
    std::uint32_t extra = 0;

    // Calls `read_some` until the buffer is full, or only once when `complete` is false, and returns the
    // number of bytes read. A stream that only trickles is given up after 100001 calls, and one that takes
    // more than 50 calls is reported. Blocks as `read_some` does; lets its exceptions through.
    std::uint32_t fill(bool complete, const Read_Some& read_some) const;
};

} // namespace Pelgar::ORBE
