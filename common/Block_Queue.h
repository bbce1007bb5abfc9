// Layer: common. The one queue of this system: a ring of heap blocks that are allocated on first use and kept
// for reuse, one mutex, one condition variable. It carries whole records (a transfer buffer, a probe block, a
// packet) with one record a block, and the words of the RHD stream with many words a block.
// Producers and consumers are named where a queue is used; any number of either is safe, but a pointer to the
// front record stays valid only until that record is popped, so records have one consumer at a time.
#pragma once

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <span>
#include <type_traits>
#include <vector>

namespace Pelgar::ORBE {

template <typename T, std::size_t elements_per_block = 1>
class Block_Queue {
    static_assert(std::is_trivially_copyable_v<T>, "elements are copied in and out as plain memory");

public:
    Block_Queue() = default;
    Block_Queue(const Block_Queue&) = delete;
    Block_Queue& operator=(const Block_Queue&) = delete;

    // Appends a copy of `element` and wakes one waiter. Returns the number of elements now in the queue.
    // Never drops; blocks on the mutex only; allocates while the queue grows to its high-water mark.
    std::size_t push_unbounded(const T& element) { return push_unbounded(std::span<const T>(&element, 1)); }

    // The same for a run of elements, appended in order in one locked operation.
    std::size_t push_unbounded(std::span<const T> elements) {
        std::size_t count = 0;
        {
            const std::lock_guard lock(m_mutex);
            append(elements);
            count = m_size.load(std::memory_order_relaxed);
        }
        m_filled.notify_one();
        return count;
    }

    // Appends a copy of `element` and wakes one waiter if the queue holds at most `limit` elements, and does
    // nothing but answer false otherwise. The count is looked at before the lock is taken: with a single
    // producer the queue never holds more than limit + 1 elements. Allocates like `push_unbounded`.
    bool push_or_drop(const T& element, std::size_t limit) {
        if (size() > limit) {
            return false;
        }
        push_unbounded(element);
        return true;
    }

    // The front element, which stays in the queue. Blocks while the queue is empty; never allocates.
    T& wait_front() {
        std::unique_lock lock(m_mutex);
        m_filled.wait(lock, [this] { return size() != 0; });
        return element(m_front);
    }

    // As `wait_front`, but answers null, at once or as soon as it is woken, when exit has been signalled.
    T* wait_front_or_exit() {
        std::unique_lock lock(m_mutex);
        m_filled.wait(lock, [this] { return size() != 0 || signalled_for_exit(); });
        return signalled_for_exit() ? nullptr : &element(m_front);
    }

    // Moves elements from the front into `destination` until it is full or the queue is empty, and returns
    // their number. Blocks while the queue is empty; never allocates.
    std::size_t wait_take(std::span<T> destination) {
        std::unique_lock lock(m_mutex);
        m_filled.wait(lock, [this] { return size() != 0; });
        std::size_t taken = 0;
        while (taken < destination.size() && size() != 0) {
            const std::size_t offset = m_front % elements_per_block;
            const std::size_t run =
                std::min({destination.size() - taken, size(), elements_per_block - offset});
            std::copy_n(&element(m_front), run, destination.data() + taken);
            remove(run);
            taken += run;
        }
        return taken;
    }

    // Removes the front element; does nothing when the queue is empty. Blocks on the mutex only.
    void pop() {
        const std::lock_guard lock(m_mutex);
        if (size() != 0) {
            remove(1);
        }
    }

    // Blocks until every element that was pushed before the call has been removed. Any thread; never
    // allocates. Not where nothing consumes.
    void wait_until_consumed() {
        std::unique_lock lock(m_mutex);
        const std::uint64_t due = m_removed + size();
        m_consumed.wait(lock, [&] { return m_removed >= due; });
    }

    // The number of elements, read without the lock. Any thread; never blocks.
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
    struct Block {
        T elements[elements_per_block];
    };

    std::size_t capacity() const { return m_blocks.size() * elements_per_block; }

    // The element at a ring position. The ring's length in blocks is a power of two, so that it wraps by
    // mask.
    T& element(std::size_t position) {
        return m_blocks[(position / elements_per_block) & (m_blocks.size() - 1)]
            ->elements[position % elements_per_block];
    }

    void append(std::span<const T> elements) {
        while (!elements.empty()) {
            // One block is kept free of the front block's elements, so that a front block that is partly
            // consumed is never written from behind.
            if (m_blocks.empty() || size() + m_front % elements_per_block == capacity()) {
                grow();
            }
            const std::size_t back = m_front + size();
            std::unique_ptr<Block>& block = m_blocks[(back / elements_per_block) & (m_blocks.size() - 1)];
            if (!block) {
                block = std::make_unique_for_overwrite<Block>();
            }
            const std::size_t offset = back % elements_per_block;
            const std::size_t run = std::min(elements.size(), elements_per_block - offset);
            std::copy_n(elements.data(), run, block->elements + offset);
            m_size.store(size() + run, std::memory_order_relaxed);
            elements = elements.subspan(run);
        }
    }

    // Doubles the ring. Only the pointers to the blocks move; the elements stay where they are.
    void grow() {
        std::vector<std::unique_ptr<Block>> blocks(m_blocks.empty() ? 1 : 2 * m_blocks.size());
        const std::size_t first = m_front / elements_per_block;
        for (std::size_t i = 0; i < m_blocks.size(); ++i) {
            blocks[i] = std::move(m_blocks[(first + i) & (m_blocks.size() - 1)]);
        }
        m_blocks = std::move(blocks);
        m_front %= elements_per_block;
    }

    // An emptied queue starts again at its first block, so that the memory in use stays the same few blocks.
    void remove(std::size_t count) {
        const std::size_t left = size() - count;
        m_size.store(left, std::memory_order_relaxed);
        m_front = left == 0 ? 0 : (m_front + count) % capacity();
        m_removed += count;
        m_consumed.notify_all();
    }

    mutable std::mutex m_mutex;
    std::condition_variable m_filled;
    std::condition_variable m_consumed;
    std::vector<std::unique_ptr<Block>> m_blocks;
    std::size_t m_front = 0;
    std::uint64_t m_removed = 0;
    std::atomic<std::size_t> m_size{0};
    std::atomic<bool> m_exit{false};
};

} // namespace Pelgar::ORBE
