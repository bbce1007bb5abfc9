// Layer: demultiplexer. The words of the RHD stream between the main demux thread, which appends them, and
// the one reader, which takes all there are under one lock and goes through them without it.
#pragma once

#include "common/Block_Queue.h"

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <span>
#include <vector>

namespace Pelgar::ORBE::demux {

// Thrown at the reader when words that it reads, or waits for, have been forgotten: what it has read of a
// frame is of no use. It goes on with a new frame.
struct RHD_Words_Forgotten {};

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

    // Blocks until the reader has come back for more after every word that was pushed before the call. Any
    // thread; not where nothing reads.
    void wait_until_used();

    // Drops the words that have not been read and wakes the reader, whose half-read frame is dropped with
    // them. A reader that is not in the middle of a frame loses nothing. Any thread, while nothing is pushed.
    void forget_words();

    // Takes the stop signal back and drops what was pushed until then, for a new reader. Not while one reads.
    void restart();

    // The next word. Reader only; blocks while the FIFO is empty. Throws RHD_Words_Forgotten.
    std::uint16_t pop_word();

    // The next words, as many as the destination holds. Reader only; blocks as often as the FIFO runs empty.
    // Throws RHD_Words_Forgotten.
    void read_words(std::span<std::uint16_t> destination);

    // Passes over the next words. Reader only; blocks and throws like `read_words`.
    void skip_words(std::uint64_t count);

    // Words that have not been read yet. Reader only.
    std::size_t size() const { return m_queue.size() + m_unread.size(); }

private:
    static constexpr std::size_t words_per_block = 16'384;

    bool refill();
    void report_used();
    std::uint64_t forgotten() const;

    Block_Queue<std::uint16_t, words_per_block> m_queue;
    std::vector<std::uint16_t> m_taken;
    std::span<const std::uint16_t> m_unread;
    // Set with release, read with acquire: whoever sees it sees every word that was pushed before it.
    std::atomic<bool> m_stop{false};
    std::uint64_t m_taken_count = 0; // words that the reader has taken out of the queue

    mutable std::mutex m_mutex; // guards the counts below
    std::condition_variable m_used_up;
    std::uint64_t m_pushed_count = 0;
    std::uint64_t m_used_count = 0;
    // The words up to this one, counted from the first that was ever pushed, are not for the reader any more.
    std::uint64_t m_forgotten_count = 0;
};

} // namespace Pelgar::ORBE::demux
