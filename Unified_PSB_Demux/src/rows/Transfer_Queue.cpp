#include "rows/Transfer_Queue.h"

#include "common/Console.h"
#include "rows/High_Water_Mark.h"

#include <cstring>

namespace Pelgar::ORBE::demux {

namespace {

// Over all demultiplexers of the process.
High_Water_Mark main_demux_queue_high_water_mark;

// The size of a record that holds a loss; no transfer is so long.
constexpr std::uint32_t loss_record_size = 0xFFFF'FFFF;

} // namespace

void Transfer_Queue::push(const Transfer& transfer) {
    if (admits(transfer)) [[likely]] {
        report_high_water_mark(m_queue.push_unbounded(transfer));
    }
}

void Transfer_Queue::exchange(std::unique_ptr<Transfer>& transfer) {
    if (admits(*transfer)) [[likely]] {
        report_high_water_mark(m_queue.exchange_unbounded(transfer));
    }
}

bool Transfer_Queue::admits(const Transfer& transfer) {
    if (!m_limit.admits(m_queue.size()) && transfer.size != 0) [[unlikely]] {
        lose(transfer);
        return false;
    }
    if (m_loss) [[unlikely]] {
        queue_loss();
    }
    return true;
}

void Transfer_Queue::lose(const Transfer& transfer) {
    if (!m_loss) {
        m_loss.emplace();
    }
    m_loss->add(transfer);
    m_report.count(transfer.size);
}

void Transfer_Queue::queue_loss() {
    auto record = std::make_unique_for_overwrite<Transfer>();
    std::memcpy(record->data, &*m_loss, sizeof *m_loss);
    record->size = loss_record_size;
    m_queue.exchange_unbounded(record);
    m_loss.reset();
}

std::optional<Stream_Loss> Transfer_Queue::loss_in(const Transfer& record) {
    if (record.size != loss_record_size) [[likely]] {
        return std::nullopt;
    }
    Stream_Loss loss;
    std::memcpy(&loss, record.data, sizeof loss);
    return loss;
}

void Transfer_Queue::report_high_water_mark(std::size_t count) {
    if (main_demux_queue_high_water_mark.raise(static_cast<std::uint32_t>(count))) {
        console::out("main_demux_queue_high_water_mark : ", count, '\n');
    }
}

} // namespace Pelgar::ORBE::demux
