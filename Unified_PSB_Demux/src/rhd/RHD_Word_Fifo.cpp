#include "rhd/RHD_Word_Fifo.h"

#include <algorithm>
#include <utility>

namespace Pelgar::ORBE::demux {

namespace {

constexpr std::size_t few_words = 4096;
// A reader that is behind by this part of the limit gets full pieces, so that the limit is reached late.
constexpr std::size_t far_behind = 8;

} // namespace

void RHD_Word_Fifo::push_words(std::span<const std::uint16_t> words) {
    while (!words.empty()) {
        const std::size_t run = std::min(words.size(), rhd_piece_capacity);
        std::copy_n(words.begin(), run, place());
        if (!extend_last_piece(run)) {
            append_piece(run);
        }
        words = words.subspan(run);
    }
}

void RHD_Word_Fifo::push_placed(std::size_t count) {
    if (extend_last_piece(count)) {
        return;
    }
    if (m_limit.admits(m_queue.size())) [[likely]] {
        append_piece(count);
    } else {
        m_loss.count(count);
        note_loss();
    }
}

// Few words are copied behind those that wait already, so that short transfers do not take a piece each, and
// many when the reader is far behind.
bool RHD_Word_Fifo::extend_last_piece(std::size_t count) {
    const bool is_worth_it = count <= few_words || m_queue.size() > m_limit.most() / far_behind;
    return is_worth_it && !m_next_follows_loss && m_queue.extend_back([&](RHD_Word_Piece& back) {
        const bool fits = count <= rhd_piece_capacity - back.count;
        if (fits) {
            count_pushed(count);
            std::copy_n(m_filling->words, count, back.words + back.count);
            back.count += count;
        }
        return fits;
    });
}

void RHD_Word_Fifo::append_piece(std::size_t count) {
    count_pushed(count);
    m_filling->count = count;
    m_filling->follows_loss = std::exchange(m_next_follows_loss, false);
    m_queue.exchange_unbounded(m_filling);
}

// Before the reader can see the words.
void RHD_Word_Fifo::count_pushed(std::size_t count) {
    const std::lock_guard lock(m_mutex);
    m_pushed_count.fetch_add(count);
}

void RHD_Word_Fifo::wait_until_used() {
    std::unique_lock lock(m_mutex);
    const std::uint64_t due = m_pushed_count;
    m_used_up.wait(lock, [&] { return m_used_count >= due; });
}

void RHD_Word_Fifo::forget_words() {
    // A word more than there is, so that a reader that waits in the middle of a frame wakes up.
    constexpr std::uint16_t wake_up_word = 0;
    {
        const std::lock_guard lock(m_mutex);
        m_forgotten_count = m_pushed_count + 1;
    }
    push_words({&wake_up_word, 1});
}

void RHD_Word_Fifo::restart() {
    m_stop.store(false, std::memory_order_release);
    m_unread = {};
    const std::lock_guard lock(m_mutex);
    m_forgotten_count = m_pushed_count;
}

std::uint16_t RHD_Word_Fifo::pop_word() {
    std::uint16_t word = 0;
    read_words({&word, 1});
    return word;
}

void RHD_Word_Fifo::read_words(std::span<std::uint16_t> destination) {
    while (!destination.empty()) {
        const std::span<const std::uint16_t> words = wait_words();
        if (words.empty()) {
            std::fill(destination.begin(), destination.end(), std::uint16_t{0});
            return;
        }
        const std::size_t run = std::min(destination.size(), words.size());
        std::copy_n(words.begin(), run, destination.begin());
        m_unread = words.subspan(run);
        destination = destination.subspan(run);
    }
}

void RHD_Word_Fifo::skip_words(std::uint64_t count) {
    while (count != 0) {
        const std::span<const std::uint16_t> words = wait_words();
        if (words.empty()) {
            return;
        }
        const auto run = static_cast<std::size_t>(std::min<std::uint64_t>(count, words.size()));
        m_unread = words.subspan(run);
        count -= run;
    }
}

std::span<const std::uint16_t> RHD_Word_Fifo::wait_words() {
    while (m_unread.empty() && refill()) {
    }
    return m_unread;
}

// Gives the piece that is used up back and takes up the next one, or waits for it. Answers false when the
// FIFO is empty and no more is to be waited for.
bool RHD_Word_Fifo::refill() {
    if (m_has_piece) {
        m_queue.pop();
        m_has_piece = false;
    }
    if (m_queue.size() == 0) {
        m_before_wait();
    }
    report_used();
    if (stop_signalled() && m_queue.size() == 0) {
        return false;
    }
    const RHD_Word_Piece& piece = m_queue.wait_front();
    m_has_piece = true;
    const std::uint64_t first = m_taken_count;
    m_taken_count += piece.count;
    const std::uint64_t valid_from = std::clamp(forgotten(), first, m_taken_count);
    m_unread = std::span(piece.words, piece.count).subspan(static_cast<std::size_t>(valid_from - first));
    if (valid_from != first || piece.follows_loss) [[unlikely]] {
        throw RHD_Words_Forgotten();
    }
    return true;
}

void RHD_Word_Fifo::report_used() {
    const std::lock_guard lock(m_mutex);
    m_used_count = m_taken_count;
    m_used_up.notify_all();
}

std::uint64_t RHD_Word_Fifo::forgotten() const {
    const std::lock_guard lock(m_mutex);
    return m_forgotten_count;
}

} // namespace Pelgar::ORBE::demux
