// Layer: common. The one queue of this system: a ring of records that are allocated on first use and kept for
// reuse, one mutex, one condition variable. Records go in by copy, or change hands: the producer gives a full
// one and gets an empty one for it. Producers and consumers are named where a queue is used; any number of
// either is safe, but a pointer to the front record stays valid only until that record is popped, so records
// have one consumer at a time.
#pragma once

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <mutex>
#include <type_traits>
#include <utility>
#include <vector>

namespace Pelgar::ORBE {

template <typename T>
class Block_Queue {
    static_assert(std::is_trivially_copyable_v<T>, "records are copied in and out as plain memory");

public:
    static constexpr std::size_t one_by_one = 0;

    Block_Queue() = default;
    Block_Queue(const Block_Queue&) = delete;
    Block_Queue& operator=(const Block_Queue&) = delete;

    // Appends a copy of `record` and wakes one waiter. Returns the number of records now in the queue.
    // Never drops; blocks on the mutex only; allocates while the queue grows to its high-water mark.
    std::size_t push_unbounded(const T& record) {
        return append([&](std::unique_ptr<T>& place) {
            if (!place) {
                place = std::make_unique_for_overwrite<T>();
            }
            *place = record;
        });
    }

    // The same with the record itself, for which the caller gets another one. What that holds is left from
    // before: it is a record that was given to the queue and popped since, and not the last one that was
    // given, or a new one.
    std::size_t exchange_unbounded(std::unique_ptr<T>& record) {
        return append([&](std::unique_ptr<T>& place) {
            if (!place) {
                place = std::make_unique_for_overwrite<T>();
            }
            place.swap(record);
        });
    }

    // Like `push_unbounded` if the queue holds at most `limit` records; does nothing but answer false
    // otherwise. The count is looked at before the lock is taken: with a single producer the queue never
    // holds more than limit + 1 records.
    bool push_or_drop(const T& record, std::size_t limit) {
        if (size() > limit) {
            return false;
        }
        push_unbounded(record);
        return true;
    }

    // The same for `exchange_unbounded`; a record that is not taken stays the caller's.
    bool exchange_or_drop(std::unique_ptr<T>& record, std::size_t limit) {
        if (size() > limit) {
            return false;
        }
        exchange_unbounded(record);
        return true;
    }

    // Lets `operation` (record -> whether it has done so) add to the last record, unless that is the front
    // one, which a consumer may have in hand. Answers whether it has. Blocks on the mutex only; wakes nobody,
    // for what is in front is there already.
    template <typename Operation>
    bool extend_back(Operation operation) {
        const std::lock_guard lock(m_mutex);
        return size() > 1 && operation(*at(m_front + size() - 1));
    }

    // The front record, which stays in the queue. Blocks while the queue is empty; never allocates.
    T& wait_front() {
        std::unique_lock lock(m_mutex);
        wait(lock, one_by_one, [this] { return size() != 0; });
        return front();
    }

    // As `wait_front`, but answers null, at once or as soon as it is woken, when exit has been signalled. A
    // caller that is about to take `wanted` records more says so: in a burst it is then woken once for them.
    // One that always takes a single one says `one_by_one`: it is woken for a burst's first record, and from
    // then on for many at a time.
    T* wait_front_or_exit(std::size_t wanted = one_by_one) {
        std::unique_lock lock(m_mutex);
        wait(lock, wanted, [this] { return size() != 0 || signalled_for_exit(); });
        return signalled_for_exit() ? nullptr : &front();
    }

    // Removes the front record; does nothing when the queue is empty. Blocks on the mutex only.
    void pop() {
        const std::lock_guard lock(m_mutex);
        if (size() != 0) {
            remove_front();
        }
    }

    // Between these two calls of the producer a waiter is woken when as many records are there as it wants
    // (at most 32), and at the end, when any are there. The producer must not wait for anything in between.
    void begin_burst() {
        const std::lock_guard lock(m_mutex);
        m_in_burst = true;
        m_woken_in_burst = false;
    }

    void end_burst() {
        bool wake = false;
        {
            const std::lock_guard lock(m_mutex);
            m_in_burst = false;
            wake = m_waiters != 0 && size() != 0;
        }
        if (wake) {
            m_filled.notify_all();
        }
    }

    // Blocks until every record that was pushed before the call has been removed. Any thread; never
    // allocates. Not where nothing consumes.
    void wait_until_consumed() {
        std::unique_lock lock(m_mutex);
        const std::uint64_t due = m_removed + size();
        m_consumed.wait(lock, [&] { return m_removed >= due; });
    }

    // The number of records, read without the lock. Any thread; never blocks.
    std::size_t size() const { return m_size.load(std::memory_order_relaxed); }

    // Makes `wait_front_or_exit` answer null from now on and wakes one waiter. Any thread.
    void signal_exit() {
        m_exit.store(true);
        // Passing through the lock once closes the gap between a waiter's look at the flag and its going to
        // sleep, in which a wake-up would be lost.
        { const std::lock_guard lock(m_mutex); }
        m_filled.notify_one();
    }

    bool signalled_for_exit() const { return m_exit.load(); }

private:
    // Few enough that a reader takes them before a queue with a limit is full.
    static constexpr std::size_t most_records_a_wake_up = 32;
    static constexpr std::size_t nothing_wanted = std::numeric_limits<std::size_t>::max();

    // The record at a ring position. The ring's length is a power of two, so that it wraps by mask.
    std::unique_ptr<T>& at(std::size_t position) { return m_ring[position & (m_ring.size() - 1)]; }

    T& front() { return *at(m_front); }

    template <typename Fill>
    std::size_t append(Fill fill) {
        std::size_t count = 0;
        bool wake = false;
        {
            const std::lock_guard lock(m_mutex);
            if (size() == m_ring.size()) {
                grow();
            }
            fill(at(m_front + size()));
            count = size() + 1;
            m_size.store(count, std::memory_order_relaxed);
            wake = m_waiters != 0 && count >= records_to_wake_for();
            if (wake) {
                m_wanted = nothing_wanted;
                m_woken_in_burst = true;
            }
        }
        if (wake) {
            m_filled.notify_one();
        }
        return count;
    }

    std::size_t records_to_wake_for() const {
        if (!m_in_burst) {
            return 1;
        }
        return m_wanted == one_by_one && m_woken_in_burst ? most_records_a_wake_up : m_wanted;
    }

    template <typename Condition>
    void wait(std::unique_lock<std::mutex>& lock, std::size_t wanted, Condition condition) {
        ++m_waiters;
        while (!condition()) {
            m_wanted = std::min({m_wanted, wanted, most_records_a_wake_up});
            m_filled.wait(lock);
        }
        if (--m_waiters == 0) {
            m_wanted = nothing_wanted;
        }
    }

    // Doubles the ring. Only the pointers to the records move; the records stay where they are.
    void grow() {
        std::vector<std::unique_ptr<T>> ring(m_ring.empty() ? 1 : 2 * m_ring.size());
        for (std::size_t i = 0; i < m_ring.size(); ++i) {
            ring[i] = std::move(at(m_front + i));
        }
        m_ring = std::move(ring);
        m_front = 0;
    }

    // An emptied queue starts again at its first record, so that the memory in use stays the same few
    // records.
    void remove_front() {
        const std::size_t left = size() - 1;
        m_size.store(left, std::memory_order_relaxed);
        m_front = left == 0 ? 0 : m_front + 1;
        ++m_removed;
        m_consumed.notify_all();
    }

    mutable std::mutex m_mutex;
    std::condition_variable m_filled;
    std::condition_variable m_consumed;
    std::vector<std::unique_ptr<T>> m_ring;
    std::size_t m_front = 0;
    std::size_t m_waiters = 0;
    std::size_t m_wanted = nothing_wanted; // the least that any waiter wants
    bool m_in_burst = false;
    bool m_woken_in_burst = false;
    std::uint64_t m_removed = 0;
    std::atomic<std::size_t> m_size{0};
    std::atomic<bool> m_exit{false};
};

} // namespace Pelgar::ORBE
