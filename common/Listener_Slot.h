// Layer: common. Holds the listener that a stage of the data path delivers to, weakly, so that the data path
// never keeps a consumer alive. Set from the host's threads while a worker thread delivers; the lock is held
// only to copy the pointer.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <thread>
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
        const std::shared_ptr<Listener> listener = is_in_own_burst() ? burst_listener() : lock();
        if (listener) {
            operation(*listener);
        }
        return listener != nullptr;
    }

    // Between these two calls the listener is looked for anew only when another one has been set, and is told
    // of the burst. An object that several threads deliver through has one burst at a time: the others'
    // deliveries go on as if there were none.
    void begin_burst() {
        std::thread::id nobody{};
        if (m_burst_thread.compare_exchange_strong(nobody, std::this_thread::get_id())) {
            look_up();
        }
    }

    void end_burst() {
        if (is_in_own_burst()) {
            let_go();
            m_burst_thread.store(std::thread::id{});
        }
    }

private:
    bool is_in_own_burst() const {
        return m_burst_thread.load(std::memory_order_relaxed) == std::this_thread::get_id();
    }

    std::shared_ptr<Listener> burst_listener() {
        if (m_told_version != m_version.load(std::memory_order_acquire)) {
            let_go();
            look_up();
        }
        return m_told.lock();
    }

    void look_up() {
        m_told_version = m_version.load(std::memory_order_acquire);
        m_told = get();
        if (const auto listener = m_told.lock()) {
            listener->burst_begins();
        }
    }

    void let_go() {
        if (const auto listener = m_told.lock()) {
            listener->burst_ends();
        }
        m_told.reset();
    }

    mutable std::mutex m_mutex;
    std::weak_ptr<Listener> m_listener;
    std::atomic<std::uint64_t> m_version{0};

    std::atomic<std::thread::id> m_burst_thread{std::thread::id{}};
    // Of the thread that is in a burst.
    std::weak_ptr<Listener> m_told;
    std::uint64_t m_told_version = 0;
};

} // namespace Pelgar::ORBE
