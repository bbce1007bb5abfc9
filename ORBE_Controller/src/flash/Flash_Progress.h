// Layer: device controller. How far the programming of the configuration flash has come. Told on the
// programming thread, after every sector that was erased and every whole page that was written, and when the
// file has ended: the last report tells that everything is done.
#pragma once

#include <cstdint>
#include <functional>

namespace Pelgar::ORBE {

struct Flash_Progress {
    const char* step;    // "erasing" or "writing"
    std::uint64_t done;  // in bytes; a byte that is erased and written counts twice
    std::uint64_t total; // in bytes
};

using Flash_Progress_Listener = std::function<void(const Flash_Progress& progress)>;

} // namespace Pelgar::ORBE
