// Layer: device controller. The card-to-host DMA stream. `setup_read` is called on the host's threads before
// the stream runs, and between two reads on the pump thread; `read_stream` on the pump thread, where it
// blocks until data has arrived.
#pragma once

#include "common/Export.h"

#include <cstdint>

namespace Pelgar::ORBE {

class ORBE_EXPORT I_InputDataStream {
public:
    // Names the buffer of `size` bytes that every following read fills. The buffer must stay valid as long as
    // reads are made. No back-end has a use for `flag` and `extra`.
    virtual bool setup_read(std::uint8_t* buffer, std::uint32_t size, std::uint8_t flag,
                            std::uint32_t extra) = 0;

    // Reads into the buffer of `setup_read` until it is full, or only once when `complete` is false, and
    // returns the number of bytes read. No back-end has a use for the first argument. Throws
    // std::runtime_error("c2h transfer failed") when the device fails.
    virtual std::uint32_t read_stream(std::uint64_t unused, bool complete) = 0;

protected:
    ~I_InputDataStream() = default;
};

} // namespace Pelgar::ORBE
