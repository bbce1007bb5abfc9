// Program orbe-view, history. A mutex that goes from thread to thread in the order in which they ask for it:
// one may take it again and again, for a moment each time, and keeps another waiting for one such moment
// only. Any thread.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace Pelgar::ORBE::view {

class Fair_Mutex {
public:
    void lock() {
        std::unique_lock lock(m_mutex);
        const std::uint64_t turn = m_next_turn++;
        m_changed.wait(lock, [&] { return turn == m_turn; });
    }

    void unlock() {
        bool is_wanted = false;
        {
            const std::lock_guard lock(m_mutex);
            is_wanted = ++m_turn != m_next_turn;
        }
        if (is_wanted) {
            m_changed.notify_all();
        }
    }

    // Threads that have it or wait for it.
    std::uint64_t wanted_by() const {
        const std::lock_guard lock(m_mutex);
        return m_next_turn - m_turn;
    }

private:
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    std::uint64_t m_turn = 0; // whose turn it is
    std::uint64_t m_next_turn = 0;
};

} // namespace Pelgar::ORBE::view
