// Layer: demultiplexer. The words of the RHD stream between the main demux thread, which appends them piece
// by piece, and the one reader, which reads them where they lie.
#pragma once

#include "common/Block_Queue.h"
#include "common/Queue_Limit.h"
#include "rhd/RHD_Word_Piece.h"
#include "wire/Loss_Report.h"

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <mutex>
#include <span>
#include <utility>

namespace Pelgar::ORBE::demux {

// Thrown at the reader when words that it reads, or waits for, have been forgotten or lost: what it has read
// of a frame is of no use. It goes on with a new frame.
struct RHD_Words_Forgotten {};

class RHD_Word_Fifo {
public:
    // `before_wait` is called on the reader's thread before anything that may take time: whenever the FIFO
    // has run empty, before the reader waits for words, and when the reader says so.
    explicit RHD_Word_Fifo(std::function<void()> before_wait = [] {})
        : m_before_wait(std::move(before_wait)) {}

    // Appends the words in order and wakes the reader. Never drops; allocates while the queue grows.
    void push_words(std::span<const std::uint16_t> words);

    // Where the next words may be put without being copied again: room for `rhd_piece_capacity` of them. They
    // belong to the reader after `push_placed`, which tells their number. One thread puts words into a FIFO.
    std::uint16_t* place() { return m_filling->words; }

    // While the FIFO is full the words are lost instead.
    void push_placed(std::size_t count);

    // `push_placed` takes at most so many pieces; without a limit before. Not while words are pushed.
    void set_limit(std::size_t pieces) { m_limit = Queue_Limit(pieces); }

    // Words are missing between the last one and the next. The frame that they are missing from is dropped.
    // For the thread that puts words.
    void note_loss() { m_next_follows_loss = true; }

    // Tells what was lost and not told yet. While nothing is pushed.
    void tell_loss() { m_loss.tell_rest(); }

    // Words that found no room. Any thread.
    std::uint64_t lost_words() const { return m_loss.total(); }

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

    // The next words, as many as lie together: some, unless the FIFO is stopped and empty. They stay where
    // they are until they are read or skipped. Reader only; blocks while the FIFO is empty. Throws
    // RHD_Words_Forgotten.
    std::span<const std::uint16_t> wait_words();

    // The reader is about to do something that may take time.
    void tell_of_wait() { m_before_wait(); }

    // Words that have not been read yet. Reader only.
    std::size_t size() const {
        return static_cast<std::size_t>(m_pushed_count.load() - m_taken_count) + m_unread.size();
    }

private:
    friend struct Demux_Test_Peer;

    bool extend_last_piece(std::size_t count);
    void append_piece(std::size_t count);
    void count_pushed(std::size_t count);
    bool refill();
    void report_used();
    std::uint64_t forgotten() const;

    std::function<void()> m_before_wait;
    Block_Queue<RHD_Word_Piece> m_queue;
    std::unique_ptr<RHD_Word_Piece> m_filling = std::make_unique_for_overwrite<RHD_Word_Piece>();
    Queue_Limit m_limit{std::numeric_limits<std::size_t>::max()};
    bool m_next_follows_loss = false;
    Loss_Report m_loss{"Queue of RHD worker", "words"};
    // What the reader has not read of the piece at the front of the queue, which it took up last.
    std::span<const std::uint16_t> m_unread;
    bool m_has_piece = false;
    std::uint64_t m_taken_count = 0; // words of the pieces that the reader has taken up
    // Set with release, read with acquire: whoever sees it sees every word that was pushed before it.
    std::atomic<bool> m_stop{false};
    std::atomic<std::uint64_t> m_pushed_count{0}; // counted under the mutex

    mutable std::mutex m_mutex; // guards the counts
    std::condition_variable m_used_up;
    std::uint64_t m_used_count = 0;
    // The words up to this one, counted from the first that was ever pushed, are not for the reader any more.
    std::uint64_t m_forgotten_count = 0;
};

} // namespace Pelgar::ORBE::demux
