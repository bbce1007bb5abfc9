// Layer: common. A plain value that one thread writes and others poll without a lock. Readers may see a
// change late; they never see a torn value.
#pragma once

#include <atomic>

namespace Pelgar::ORBE {

template <typename T>
class Relaxed {
public:
    Relaxed() = default;

    explicit Relaxed(T value) : m_value(value) {}

    Relaxed(const Relaxed&) = delete;
    Relaxed& operator=(const Relaxed&) = delete;

    Relaxed& operator=(T value) {
        store(value);
        return *this;
    }

    operator T() const { return load(); }

    T load() const { return m_value.load(std::memory_order_relaxed); }

    void store(T value) { m_value.store(value, std::memory_order_relaxed); }

    // Adds `amount` and returns the value from before (integers only). Any thread.
    T fetch_add(T amount) { return m_value.fetch_add(amount, std::memory_order_relaxed); }

private:
    std::atomic<T> m_value{};
};

} // namespace Pelgar::ORBE
