// Test support, box road. The pieces of the stream on their way from the box to one reader, which takes from
// them what it must receive. The pump thread pushes, the reader's thread pops and waits.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <vector>

namespace Pelgar::ORBE::test {

using Piece = std::shared_ptr<const std::vector<std::uint8_t>>;

class Piece_Queue {
public:
    void push(Piece piece);

    // Blocks until there is a piece; null when there will be none any more.
    Piece wait();

    // Whether the reader has used up all pieces and waits for another.
    bool is_idle() const;

    // The reader will not come back.
    void abandon();

    // Ends the reader once it has used up all pieces.
    void end();

private:
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<Piece> m_pieces;
    bool m_waiting = false;
    bool m_abandoned = false;
    bool m_ended = false;
};

} // namespace Pelgar::ORBE::test
