#include "RHD_Word_Fifo.h"

#include <algorithm>

namespace Pelgar::ORBE::demux {

RHD_Word_Fifo::RHD_Word_Fifo() : m_taken(words_per_block) {}

void RHD_Word_Fifo::push_words(std::span<const std::uint16_t> words) {
    m_queue.push_unbounded(words);
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
    if (stop_signalled() && m_queue.size() == 0) {
        return false;
    }
    m_unread = std::span<const std::uint16_t>(m_taken).first(m_queue.wait_take(m_taken));
    return true;
}

} // namespace Pelgar::ORBE::demux
