// Layer: façade, host mode. A bounded queue of packets between a worker thread of the demultiplexer and the
// host's threads, without a lock: a host may end a thread by force in the middle of a read, and nothing that
// such a thread holds may be missed. One producer; any number of readers, who get each packet once.
#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <type_traits>
#include <utility>

namespace Pelgar::ORBE::npoe_adapter {

// What a reader does with a record that it is shown.
enum class Verdict : std::uint8_t {
    taken,   // it is one of those that were asked for
    skipped, // nobody is to have it
    left     // it stays, and all behind it
};

template <typename Record>
class Packet_Ring {
    static_assert(std::is_trivially_copyable_v<Record>, "a reader may be stopped at any instruction");

public:
    // Allocates everything there will ever be, and has the system give it now.
    explicit Packet_Ring(std::size_t capacity)
        : m_capacity(capacity), m_records(std::make_unique<Record[]>(capacity)) {}

    std::size_t size() const {
        // Readers and the producer may have moved on between the two.
        const std::uint64_t first = m_first.load(std::memory_order_acquire);
        const std::uint64_t queued = m_end.load(std::memory_order_acquire) - first;
        return std::min(static_cast<std::size_t>(queued), m_capacity);
    }

    // The producer: `write` (Record& -> void) fills the next record. False, without calling it, when the ring
    // is full.
    template <typename Write>
    bool push(Write write) {
        const std::uint64_t end = m_end.load(std::memory_order_relaxed);
        if (end - m_first.load(std::memory_order_acquire) >= m_capacity) {
            return false;
        }
        write(m_records[static_cast<std::size_t>(end % m_capacity)]);
        m_end.store(end + 1, std::memory_order_release);
        return true;
    }

    // Shows records to `look` (const Record&, how many were taken before -> Verdict), oldest first, until
    // `most` are taken, and returns how many were. 0, whatever `look` has seen, when another reader was
    // faster.
    template <typename Look>
    std::size_t take(std::size_t most, Look look) {
        std::uint64_t first = m_first.load(std::memory_order_acquire);
        const std::uint64_t end = m_end.load(std::memory_order_acquire);
        std::uint64_t next = first;
        std::size_t taken = 0;
        for (; next != end && taken < most; ++next) {
            const Verdict verdict =
                look(std::as_const(m_records[static_cast<std::size_t>(next % m_capacity)]), taken);
            if (verdict == Verdict::left) {
                break;
            }
            taken += verdict == Verdict::taken ? 1 : 0;
        }
        if (next == first) {
            return 0;
        }
        return m_first.compare_exchange_strong(first, next, std::memory_order_acq_rel) ? taken : 0;
    }

    // Forgets what is queued. Any thread.
    void discard() {
        std::uint64_t first = m_first.load(std::memory_order_acquire);
        while (!m_first.compare_exchange_weak(first, m_end.load(std::memory_order_acquire),
                                              std::memory_order_acq_rel)) {
        }
    }

private:
    const std::size_t m_capacity;
    const std::unique_ptr<Record[]> m_records;
    // Records that were ever taken, and pushed.
    std::atomic<std::uint64_t> m_first{0};
    std::atomic<std::uint64_t> m_end{0};
};

} // namespace Pelgar::ORBE::npoe_adapter
