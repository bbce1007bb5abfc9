// Tools, recording library. Gathers the rows of one port into blocks of 1,792 super frames, by the rules by
// which the library does: a block begins only with a row that starts a super frame, and it is complete when
// the row after it comes. What is left unfinished at the end is lost.
#pragma once

#include "stream_format/Wire_Format.h"

#include <cstdint>
#include <span>
#include <vector>

namespace Pelgar::ORBE::recording {

class Block_Gatherer {
public:
    // `port` is the stream id, 0..3.
    explicit Block_Gatherer(unsigned port);

    // Takes the rows of a piece. A piece is smaller than a block, so at most one block is completed; true if
    // so.
    bool feed(std::span<const std::uint8_t> piece);

    // The words of the block that was completed last, valid until the next block is.
    const std::vector<std::uint16_t>& block() const { return m_complete; }

private:
    unsigned m_port;
    std::vector<std::uint16_t> m_filling;
    std::vector<std::uint16_t> m_complete;
    std::size_t m_fill = 0; // in words
};

} // namespace Pelgar::ORBE::recording
