// Layer: demultiplexer. The main queue: transfers on their way from the pump thread to the main demux thread.
// While it is full transfers are lost whole; what they would have brought is queued in their place, so that
// the main demux thread knows of it between the right two transfers.
#pragma once

#include "common/Block_Queue.h"
#include "common/Queue_Limit.h"
#include "rows/Stream_Loss.h"
#include "wire/Loss_Report.h"
#include "wire/Main_mux_transfer_buffer_wrapper.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>

namespace Pelgar::ORBE::demux {

class Transfer_Queue {
public:
    using Transfer = Main_mux_transfer_buffer_wrapper;

    // The queue takes at most so many transfers; without a limit before. Not while transfers are queued.
    void set_limit(std::size_t transfers) { m_limit = Queue_Limit(transfers); }

    // ---- One thread at a time, that of the pump. Never blocks for long; allocates while the queue grows.

    // Queues a copy, or loses it. The transfer of size 0 is never lost.
    void push(const Transfer& transfer);

    // The same with the record itself, for which the caller gets another one. One that is lost stays the
    // caller's.
    void exchange(std::unique_ptr<Transfer>& transfer);

    // Tells what was lost and not told yet. While nothing is queued.
    void tell_loss() { m_report.tell_rest(); }

    // ---- The main demux thread.

    // The front record, which stays in the queue: a transfer, or what was lost in front of the next one.
    // Blocks while the queue is empty.
    const Transfer& wait_front() { return m_queue.wait_front(); }

    void pop() { m_queue.pop(); }

    // Empty for a transfer.
    static std::optional<Stream_Loss> loss_in(const Transfer& record);

    // ---- Any thread.

    // Blocks until every record that was queued before the call has been removed. Not where nothing consumes.
    void wait_until_consumed() { m_queue.wait_until_consumed(); }

    std::size_t size() const { return m_queue.size(); }

    // Bytes of transfers that found no room.
    std::uint64_t lost_bytes() const { return m_report.total(); }

private:
    bool admits(const Transfer& transfer);
    void lose(const Transfer& transfer);
    void queue_loss();
    static void report_high_water_mark(std::size_t count);

    Block_Queue<Transfer> m_queue;
    Queue_Limit m_limit{std::numeric_limits<std::size_t>::max()};
    std::optional<Stream_Loss> m_loss; // since the last transfer that was queued
    Loss_Report m_report{"Main demux queue", "bytes"};
};

} // namespace Pelgar::ORBE::demux
