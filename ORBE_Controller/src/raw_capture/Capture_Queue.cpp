#include "raw_capture/Capture_Queue.h"

#include <algorithm>
#include <cstring>

namespace Pelgar::ORBE {

namespace {

constexpr std::size_t part_that_is_free_after_a_loss = 8;

} // namespace

Capture_Queue::Capture_Queue(std::size_t capacity)
    : m_capacity(capacity), m_memory(std::make_unique_for_overwrite<std::uint8_t[]>(capacity)) {}

// Copies without the lock: the consumer does not see these bytes until they are counted.
void Capture_Queue::push(std::span<const std::uint8_t> bytes) {
    std::size_t at = 0;
    {
        const std::lock_guard lock(m_mutex);
        const auto size = static_cast<std::size_t>(m_pushed - m_popped);
        if (size == 0) {
            // An emptied queue starts again at its beginning, so that the memory in use stays the same.
            m_begin = 0;
        }
        const std::size_t wanted =
            m_is_losing ? std::max(bytes.size(), m_capacity / part_that_is_free_after_a_loss) : bytes.size();
        if (m_is_closed || wanted > m_capacity - size) {
            lose(bytes.size());
            return;
        }
        m_is_losing = false;
        at = (m_begin + size) % m_capacity;
    }
    copy_in(at, bytes);
    {
        const std::lock_guard lock(m_mutex);
        if (m_is_closed) {
            // The consumer may have seen the end already.
            lose(bytes.size());
            return;
        }
        m_pushed += bytes.size();
    }
    m_filled.notify_one();
}

void Capture_Queue::lose(std::size_t bytes) {
    m_lost.bytes += bytes;
    m_lost.places += m_is_losing ? 0 : 1;
    m_is_losing = true;
}

void Capture_Queue::copy_in(std::size_t at, std::span<const std::uint8_t> bytes) {
    const std::size_t first = std::min(bytes.size(), m_capacity - at);
    std::memcpy(m_memory.get() + at, bytes.data(), first);
    std::memcpy(m_memory.get(), bytes.data() + first, bytes.size() - first);
}

void Capture_Queue::end_run() {
    {
        const std::lock_guard lock(m_mutex);
        if (m_is_closed) {
            return;
        }
        const Losses lost{m_lost.bytes - m_lost_before_run.bytes, m_lost.places - m_lost_before_run.places};
        m_run_ends.push_back({m_pushed, lost});
        m_lost_before_run = m_lost;
        m_is_losing = false;
    }
    m_filled.notify_one();
}

Capture_Queue::Front Capture_Queue::wait_front(std::size_t most) {
    std::unique_lock lock(m_mutex);
    m_filled.wait(lock, [this] { return m_pushed != m_popped || !m_run_ends.empty() || m_is_closed; });
    const std::uint64_t end = m_run_ends.empty() ? m_pushed : m_run_ends.front().position;
    if (end == m_popped) {
        return m_run_ends.empty() ? Front{} : Front{{}, true, m_run_ends.front().lost};
    }
    const auto size = static_cast<std::size_t>(std::min<std::uint64_t>(end - m_popped, most));
    return {{m_memory.get() + m_begin, std::min(size, m_capacity - m_begin)}, false, {}};
}

void Capture_Queue::pop(const Front& front) {
    const std::lock_guard lock(m_mutex);
    m_popped += front.bytes.size();
    m_begin = (m_begin + front.bytes.size()) % m_capacity;
    if (front.ends_run) {
        m_run_ends.pop_front();
    }
}

void Capture_Queue::close() {
    {
        const std::lock_guard lock(m_mutex);
        m_is_closed = true;
    }
    m_filled.notify_one();
}

Capture_Queue::Losses Capture_Queue::lost() const {
    const std::lock_guard lock(m_mutex);
    return m_lost;
}

bool Capture_Queue::is_empty() const {
    const std::lock_guard lock(m_mutex);
    return m_pushed == m_popped && m_run_ends.empty();
}

double Capture_Queue::fill() const {
    const std::lock_guard lock(m_mutex);
    return static_cast<double>(m_pushed - m_popped) / static_cast<double>(m_capacity);
}

} // namespace Pelgar::ORBE
