// Layer: device controller. A receive buffer on a page border, as the DMA driver wants it. Allocated on the
// host's thread, filled on the pump thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>

namespace Pelgar::ORBE {

inline constexpr std::size_t page_size = 4096;

struct Page_Aligned_Delete {
    void operator()(std::uint8_t* buffer) const noexcept {
        ::operator delete (buffer, std::align_val_t{page_size});
    }
};

using Page_Aligned_Buffer = std::unique_ptr<std::uint8_t[], Page_Aligned_Delete>;

// Throws std::bad_alloc.
inline Page_Aligned_Buffer make_page_aligned_buffer(std::size_t size) {
    return Page_Aligned_Buffer(
        static_cast<std::uint8_t*>(::operator new (size, std::align_val_t{page_size})));
}

} // namespace Pelgar::ORBE
