// Layer: demultiplexer. Follows the 20-bit frame counter of a probe over its wraps, which come every 2.7 s,
// and over gaps. One thread; nothing blocks.
#pragma once

#include <cstdint>

namespace Pelgar::ORBE::demux {

class Super_Frame_Counter {
public:
    // `frame_counter` is that of a super frame's first frame. Returns how many super frames the probe has
    // sent before it. A counter that does not go on where it was stands for lost super frames, up to several
    // seconds of them, or for a probe that counts from 0 again.
    std::uint64_t follow(std::uint32_t frame_counter);

    // So many super frames are known to be missing before the next one.
    void skip(std::uint32_t super_frames);

private:
    std::uint64_t resume(std::uint32_t frame_counter) const;

    std::uint64_t m_next = 0; // the counter that would be next, without its wraps
};

} // namespace Pelgar::ORBE::demux
