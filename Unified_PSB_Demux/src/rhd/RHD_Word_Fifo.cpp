#include "rhd/RHD_Word_Fifo.h"

#include <algorithm>

namespace Pelgar::ORBE::demux {

RHD_Word_Fifo::RHD_Word_Fifo() : m_taken(words_per_block) {}

void RHD_Word_Fifo::push_words(std::span<const std::uint16_t> words) {
    {
        const std::lock_guard lock(m_mutex);
        m_pushed_count += words.size();
    }
    m_queue.push_unbounded(words);
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
        if (m_unread.empty() && !refill()) {
            std::fill(destination.begin(), destination.end(), std::uint16_t{0});
            return;
        }
        const std::size_t run = std::min(destination.size(), m_unread.size());
        std::copy_n(m_unread.begin(), run, destination.begin());
        m_unread = m_unread.subspan(run);
        destination = destination.subspan(run);
    }
}

void RHD_Word_Fifo::skip_words(std::uint64_t count) {
    while (count != 0) {
        if (m_unread.empty() && !refill()) {
            return;
        }
        const auto run = static_cast<std::size_t>(std::min<std::uint64_t>(count, m_unread.size()));
        m_unread = m_unread.subspan(run);
        count -= run;
    }
}

// Takes what is queued, or waits for it. Answers false when the FIFO is empty and no more is to be waited
// for.
bool RHD_Word_Fifo::refill() {
    report_used();
    if (stop_signalled() && m_queue.size() == 0) {
        return false;
    }
    const std::uint64_t first = m_taken_count;
    const auto taken = std::span<const std::uint16_t>(m_taken).first(m_queue.wait_take(m_taken));
    m_taken_count += taken.size();
    const std::uint64_t valid_from = std::clamp(forgotten(), first, m_taken_count);
    m_unread = taken.subspan(static_cast<std::size_t>(valid_from - first));
    if (valid_from != first) {
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
