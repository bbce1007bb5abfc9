// Layer: demultiplexer. The words of the RHD stream between the main demux thread, which appends them, and
// the one reader, which takes all there are under one lock and goes through them without it.
#pragma once

#include "Block_Queue.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace Pelgar::ORBE::demux {

class RHD_Word_Fifo {
public:
    RHD_Word_Fifo();

    // Appends the words in order in one locked operation and wakes the reader. Never drops; allocates while
    // the queue grows.
    void push_words(std::span<const std::uint16_t> words);

    // From now on an empty FIFO reads as zeros and does not block. A reader that is blocked already sees it
    // after the next push. Any thread.
    void signal_to_stop() { m_stop.store(true, std::memory_order_release); }

    bool stop_signalled() const { return m_stop.load(std::memory_order_acquire); }

    // The next word. Reader only; blocks while the FIFO is empty.
    std::uint16_t pop_word();

    // The next words, as many as the destination holds. Reader only; blocks as often as the FIFO runs empty.
    void read_words(std::span<std::uint16_t> destination);

    // Passes over the next words. Reader only; blocks like `read_words`.
    void skip_words(std::uint64_t count);

    // Words that have not been read yet. Reader only.
    std::size_t size() const { return m_queue.size() + m_unread.size(); }

private:
    static constexpr std::size_t words_per_block = 16'384;

    bool refill();

    Block_Queue<std::uint16_t, words_per_block> m_queue;
    std::vector<std::uint16_t> m_taken;
    std::span<const std::uint16_t> m_unread;
    // Set with release, read with acquire: whoever sees it sees every word that was pushed before it.
    std::atomic<bool> m_stop{false};
};

} // namespace Pelgar::ORBE::demux
