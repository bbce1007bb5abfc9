// Layer: common. Holds the listener that a stage of the data path delivers to, weakly, so that the data path
// never keeps a consumer alive. Set from the host's threads while a worker thread delivers; the lock is held
// only to copy the pointer.
#pragma once

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
    }

    std::weak_ptr<Listener> get() const {
        const std::lock_guard guard(m_mutex);
        return m_listener;
    }

    // The live listener, or empty when none is set or its owner has let it go.
    std::shared_ptr<Listener> lock() const { return get().lock(); }

private:
    mutable std::mutex m_mutex;
    std::weak_ptr<Listener> m_listener;
};

} // namespace Pelgar::ORBE
