#include "probe/Super_Frame_Counter.h"

#include "wire/PSB_Format.h"

namespace Pelgar::ORBE::demux {

namespace {

constexpr std::uint64_t counter_mask = psb::counter_max;

// A longer way ahead is taken for a counter that has begun anew: 8 s.
constexpr std::uint64_t longest_gap = std::uint64_t{3} << psb::counter_bits;

bool starts_super_frame(std::uint64_t counter) {
    return counter % psb::frames_per_super_frame == 0;
}

// The first count from `least` on that has these low bits and is that of a super frame's first frame. The
// number of wraps so comes from the counter itself, because 2^20 is no multiple of 13.
std::uint64_t first_from(std::uint64_t least, std::uint32_t low_bits) {
    std::uint64_t count = (least & ~counter_mask) | low_bits;
    while (count < least || !starts_super_frame(count)) {
        count += counter_mask + 1;
    }
    return count;
}

} // namespace

std::uint64_t Super_Frame_Counter::follow(std::uint32_t frame_counter) {
    const std::uint64_t count = frame_counter == (m_next & counter_mask) ? m_next : resume(frame_counter);
    m_next = count + psb::frames_per_super_frame;
    return count / psb::frames_per_super_frame;
}

void Super_Frame_Counter::skip(std::uint32_t super_frames) {
    m_next += std::uint64_t{super_frames} * psb::frames_per_super_frame;
}

std::uint64_t Super_Frame_Counter::resume(std::uint32_t frame_counter) const {
    const std::uint64_t ahead = first_from(m_next, frame_counter);
    const bool may_be_anew = starts_super_frame(frame_counter);
    const bool is_anew = frame_counter == 0 || (may_be_anew && ahead - m_next > longest_gap);
    return is_anew ? frame_counter : ahead;
}

} // namespace Pelgar::ORBE::demux
