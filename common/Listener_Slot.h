// Layer: common. Holds the listener that a stage of the data path delivers to, weakly, so that the data path
// never keeps a consumer alive. Set from the host's threads while a worker thread delivers; the lock is held
// only to copy the pointer.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <utility>

namespace Pelgar::ORBE {

template <typename Listener>
class Listener_Slot {
public:
    void set(std::weak_ptr<Listener> listener) {
        const std::lock_guard guard(m_mutex);
        m_listener.swap(listener);
        m_version.fetch_add(1, std::memory_order_release);
    }

    std::weak_ptr<Listener> get() const {
        const std::lock_guard guard(m_mutex);
        return m_listener;
    }

    // The live listener, or empty when none is set or its owner has let it go.
    std::shared_ptr<Listener> lock() const { return get().lock(); }

    // ---- The delivering thread.

    // Carries out `operation` on the live listener; answers false when there is none.
    template <typename Operation>
    bool deliver(Operation operation) {
        if (!m_in_burst) {
            const std::shared_ptr<Listener> listener = lock();
            if (listener) {
                operation(*listener);
            }
            return listener != nullptr;
        }
        if (is_stale()) {
            let_go();
            look_up();
        }
        if (m_held) {
            operation(*m_held);
        }
        return m_held != nullptr;
    }

    // Between these two calls the listener is looked up once, and anew only when another one has been set or
    // its owner has let it go. The listener is told of the burst.
    void begin_burst() {
        m_in_burst = true;
        look_up();
    }

    void end_burst() {
        let_go();
        m_in_burst = false;
    }

private:
    // Nobody but this slot holding the listener means that its owner has let it go.
    bool is_stale() const {
        return m_held_version != m_version.load(std::memory_order_acquire) || m_held.use_count() == 1;
    }

    void look_up() {
        m_held_version = m_version.load(std::memory_order_acquire);
        m_held = lock();
        if (m_held) {
            m_held->burst_begins();
        }
    }

    void let_go() {
        if (m_held) {
            m_held->burst_ends();
            m_held.reset();
        }
    }

    mutable std::mutex m_mutex;
    std::weak_ptr<Listener> m_listener;
    std::atomic<std::uint64_t> m_version{0};

    bool m_in_burst = false;
    std::shared_ptr<Listener> m_held;
    std::uint64_t m_held_version = 0;
};

} // namespace Pelgar::ORBE
