// Tools, recording library. Walks through the frames of a block of super frames. A super frame that does not
// start with the flag ends the block; lane tags do not matter.
#pragma once

#include "stream_format/Wire_Format.h"

#include <cstdint>
#include <span>

namespace Pelgar::ORBE::recording {

// A frame as it was sent: 35 words, row after row.
using Frame = std::span<const std::uint16_t, words_per_frame>;

class Frame_Cursor {
public:
    // Begins a block, which must stay as it is until the last frame was taken.
    void start(std::span<const std::uint16_t> block) {
        m_block = block;
        m_position = 0;
    }

    bool at_end() const {
        return m_position == m_block.size() ||
               (m_position % words_per_super_frame == 0 && (m_block[m_position] & super_frame_flag) == 0);
    }

    // The next frame; only when not at the end.
    Frame next() {
        const Frame frame = m_block.subspan(m_position).first<words_per_frame>();
        m_position += words_per_frame;
        return frame;
    }

private:
    std::span<const std::uint16_t> m_block;
    std::size_t m_position = 0;
};

} // namespace Pelgar::ORBE::recording
