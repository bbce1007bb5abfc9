// Layer: demultiplexer. One transfer of the box's multiplexed DMA stream, as it travels from the pump thread
// to the main demux thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <new>

namespace Pelgar::ORBE::demux {

inline constexpr std::size_t transfer_buffer_capacity = 0x100000;

// A plain record of 0x100004 bytes: stream data followed by the number of bytes that are valid. A size of 0
// marks the poison packet that ends the demultiplexer. On the heap it lies on a page border, as the DMA
// driver wants the memory that it fills.
struct Main_mux_transfer_buffer_wrapper {
    static constexpr std::align_val_t page_size{4096};

    static void* operator new(std::size_t size) { return ::operator new(size, page_size); }

    static void operator delete(void* record) noexcept { ::operator delete(record, page_size); }

    std::uint8_t data[transfer_buffer_capacity];
    std::uint32_t size;
};

static_assert(sizeof(Main_mux_transfer_buffer_wrapper) == 0x100004);

} // namespace Pelgar::ORBE::demux
