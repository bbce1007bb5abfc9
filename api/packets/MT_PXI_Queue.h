// Layer: façade. A bounded queue of finished packets between a worker thread of the demultiplexer (producer)
// and a host thread (consumer). A full queue drops the newest packet: the data path never waits for the host.
#pragma once

#include "common/Block_Queue.h"

#include <loguru.hpp>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace Pelgar::ORBE::npoe_adapter {

// A push is accepted while the queue holds at most this many packets, so that it holds one more at the most.
inline constexpr std::size_t packet_queue_limit = 500;

// What a reader that is asked for `requested` packets in a call, and has taken `taken`, says that it wants.
inline std::size_t packets_wanted(int requested, int taken) {
    return requested == 1 ? Block_Queue<std::uint8_t>::one_by_one
                          : static_cast<std::size_t>(requested - taken);
}

template <typename Record>
class MT_PXI_Queue {
public:
    // `overflow_counter` counts the drops of all queues of one kind and decides which are logged; `exit_text`
    // is logged when a reader is turned away.
    MT_PXI_Queue(std::atomic<std::uint8_t>& overflow_counter, const char* exit_text)
        : m_overflow_counter(overflow_counter), m_exit_text(exit_text) {}

    // Appends a copy and wakes one reader; drops the record when the queue is full, and logs the first and
    // then every 256th drop. Worker thread; blocks on the queue's mutex only.
    void push(const Record& record) { report_overflow(m_records.push_or_drop(record, packet_queue_limit)); }

    // The same with the record itself, for which the caller gets another one, whatever that holds. Answers
    // false, and leaves the record to the caller, when it is dropped. What is queued may be read, not
    // changed, by the producer until the next exchange.
    bool exchange(std::unique_ptr<Record>& record) {
        return report_overflow(m_records.exchange_or_drop(record, packet_queue_limit));
    }

    // Between these two calls of the producer a reader is woken once for many records.
    void begin_burst() { m_records.begin_burst(); }

    void end_burst() { m_records.end_burst(); }

    // The front record, which stays in the queue. Blocks while the queue is empty. Once exit is signalled it
    // answers a scratch record at once: look at `signalled_for_exit` before using what it points to. A reader
    // says how many records it is about to take, as with `Block_Queue::wait_front_or_exit`.
    const Record* peek_xfer_buffer_from_queue(std::size_t wanted = Block_Queue<Record>::one_by_one) {
        if (const Record* front = m_records.wait_front_or_exit(wanted)) {
            return front;
        }
        LOG_F(INFO, "%s", m_exit_text);
        return &m_scratch;
    }

    // Removes the front record.
    void pop() { m_records.pop(); }

    // Read without the lock; any thread.
    std::size_t size() const { return m_records.size(); }

    bool signalled_for_exit() const { return m_records.signalled_for_exit(); }

    // Turns readers away from now on and wakes one that is blocked. Any thread.
    void signal_exit() { m_records.signal_exit(); }

private:
    bool report_overflow(bool accepted) {
        if (!accepted && m_overflow_counter.fetch_add(1) == 0) {
            LOG_F(INFO, "MT_NP_PXI_Queue overflow");
        }
        return accepted;
    }

    Block_Queue<Record> m_records;
    std::atomic<std::uint8_t>& m_overflow_counter;
    const char* m_exit_text;
    Record m_scratch{};
};

} // namespace Pelgar::ORBE::npoe_adapter
