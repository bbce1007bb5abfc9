// Layer: demultiplexer. Whether the frame counter of a probe goes on from one super frame to the next, over
// super frames that are taken and over such that are dropped. Called on the NP worker thread; nothing blocks.
#pragma once

#include "wire/PSB_Format.h"

#include <cstdint>

namespace Pelgar::ORBE::demux {

class Frame_Continuity {
public:
    // A super frame whose frame counters run on from this one. False when the one before did not lead to it.
    bool follow(std::uint32_t first) {
        const bool goes_on = first == m_next;
        m_next = after(first, psb::frames_per_super_frame);
        return goes_on;
    }

    // A frame of a super frame that is dropped, of which all thirteen come one after the other. Answers like
    // the above, with the last of them and for all. Where their counters do not run on, rows are missing and
    // other words stand in their places: nothing is known then before the next super frame.
    bool follow_dropped(std::uint32_t counter) {
        if (m_dropped_frames == 0) {
            m_first_dropped = counter;
            m_runs_on = true;
        }
        m_runs_on = m_runs_on && counter == after(m_first_dropped, m_dropped_frames);
        if (++m_dropped_frames < psb::frames_per_super_frame) {
            return true;
        }
        m_dropped_frames = 0;
        return !m_runs_on || follow(m_first_dropped);
    }

    // So many super frames are known to be missing before the next one, and not because the probe or its link
    // lost them.
    void skip(std::uint32_t super_frames) {
        const std::uint64_t frames = std::uint64_t{super_frames} * psb::frames_per_super_frame;
        m_next = after(m_next, static_cast<std::uint32_t>(frames & psb::counter_max));
    }

private:
    static std::uint32_t after(std::uint32_t counter, std::uint32_t frames) {
        return (counter + frames) & psb::counter_max;
    }

    std::uint32_t m_next = 0;
    std::uint32_t m_dropped_frames = 0; // of the super frame that is being dropped
    std::uint32_t m_first_dropped = 0;
    bool m_runs_on = false;
};

} // namespace Pelgar::ORBE::demux
