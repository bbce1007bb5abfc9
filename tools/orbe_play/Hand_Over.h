// Program orbe-play. Hands batches of packets from a reader thread to the thread that compares them: a ring
// of batches that are allocated once. One producer, one consumer.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <vector>

namespace Pelgar::ORBE::recording {

template <typename Batch>
class Hand_Over {
public:
    explicit Hand_Over(std::size_t batches) : m_ring(batches) {}

    // The producer's next batch to fill. Blocks while the consumer is a whole ring behind.
    Batch& wait_free() {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return m_filled - m_released < m_ring.size(); });
        return m_ring[m_filled % m_ring.size()];
    }

    // Gives the batch from `wait_free` to the consumer.
    void publish() {
        {
            const std::lock_guard lock(m_mutex);
            ++m_filled;
        }
        m_changed.notify_all();
    }

    // The producer has published its last batch.
    void finish() {
        {
            const std::lock_guard lock(m_mutex);
            m_finished = true;
        }
        m_changed.notify_all();
    }

    // The consumer's next batch; null after the last. Blocks while there is none.
    const Batch* wait_filled() {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return m_filled != m_released || m_finished; });
        return m_filled == m_released ? nullptr : &m_ring[m_released % m_ring.size()];
    }

    // Gives the batch from `wait_filled` back to the producer.
    void release() {
        {
            const std::lock_guard lock(m_mutex);
            ++m_released;
        }
        m_changed.notify_all();
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<Batch> m_ring;
    std::size_t m_filled = 0;
    std::size_t m_released = 0;
    bool m_finished = false;
};

} // namespace Pelgar::ORBE::recording
