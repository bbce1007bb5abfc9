#include "host_streams/Sync_Levels.h"

#include <algorithm>

namespace Pelgar::ORBE::npoe_adapter {

void Sync_Levels::restart(std::uint32_t streaming) {
    m_last.store(false, std::memory_order_relaxed);
    m_end.store(0, std::memory_order_relaxed);
    m_streaming.store(streaming, std::memory_order_release);
}

void Sync_Levels::record(std::uint64_t sample, bool level) {
    const std::uint64_t end = m_end.load(std::memory_order_relaxed);
    const bool last = m_last.load(std::memory_order_relaxed);
    // Over a gap the level is what it was.
    for (std::uint64_t i = std::max(end, sample - std::min(sample, kept)); i < sample; ++i) {
        set(i, last);
    }
    set(sample, level);
    m_last.store(level, std::memory_order_relaxed);
    m_end.store(sample + 1, std::memory_order_release);
}

void Sync_Levels::set(std::uint64_t sample, bool level) {
    std::atomic<std::uint64_t>& word = m_words[sample / bits_per_word % word_count];
    const std::uint64_t bit = std::uint64_t{1} << (sample % bits_per_word);
    const std::uint64_t before = word.load(std::memory_order_relaxed);
    word.store(level ? before | bit : before & ~bit, std::memory_order_relaxed);
}

bool Sync_Levels::has(std::uint32_t streaming, std::uint64_t sample) const {
    return m_streaming.load(std::memory_order_acquire) == streaming &&
           sample < m_end.load(std::memory_order_acquire);
}

bool Sync_Levels::level(std::uint32_t streaming, std::uint64_t sample) const {
    if (m_streaming.load(std::memory_order_acquire) != streaming) {
        return false;
    }
    const std::uint64_t end = m_end.load(std::memory_order_acquire);
    if (sample >= end || end - sample > kept) {
        return m_last.load(std::memory_order_relaxed);
    }
    const std::uint64_t word = m_words[sample / bits_per_word % word_count].load(std::memory_order_relaxed);
    return ((word >> (sample % bits_per_word)) & 1U) != 0;
}

} // namespace Pelgar::ORBE::npoe_adapter
