#include "DMA_Source.h"

#include "Row_Source.h"

#include <algorithm>
#include <chrono>
#include <stdexcept>
#include <utility>

namespace Pelgar::ORBE::test {

namespace {

// How long a read without anything to wait for takes, so that a pump without data does not spin.
constexpr auto idle_wait = std::chrono::milliseconds(1);

// A read that is held back gives up after this time, so that no test hangs.
constexpr auto patience = std::chrono::seconds(30);

} // namespace

DMA_Source::DMA_Source(recording::Recording_Options options)
    : DMA_Source(std::make_unique<Row_Source>(std::move(options))) {}

DMA_Source::DMA_Source(std::unique_ptr<A_Row_Source> rows) : m_rows(std::move(rows)) {}

void DMA_Source::enable(const Stream_Enables& enables) {
    const std::lock_guard lock(m_mutex);
    const bool ports_stop = m_enables.any_port() && !enables.any_port();
    const bool rhd_stops = m_enables.rhd_streams && !enables.rhd_streams;
    if (ports_stop || rhd_stops) {
        ++m_stops;
    }
    m_enables = enables;
    m_changed.notify_all();
}

void DMA_Source::restart_probe(std::size_t port) {
    const std::lock_guard lock(m_mutex);
    m_changes.restarted.at(port) = true;
}

void DMA_Source::reset() {
    const std::lock_guard lock(m_mutex);
    m_changes = {};
    m_changes.reset = true;
    ++m_stops;
    m_changed.notify_all();
}

void DMA_Source::set_connected(bool connected) {
    const std::lock_guard lock(m_mutex);
    if (m_connected && !connected) {
        ++m_stops;
    }
    m_connected = connected;
    m_changed.notify_all();
}

void DMA_Source::setup_read(std::uint8_t* buffer, std::uint32_t size) {
    const std::lock_guard lock(m_mutex);
    m_buffer = buffer;
    m_size = size;
}

void DMA_Source::set_limit(std::uint64_t ticks) {
    const std::lock_guard lock(m_mutex);
    m_limit = ticks;
    m_changed.notify_all();
}

std::uint64_t DMA_Source::ticks() const {
    const std::lock_guard lock(m_mutex);
    return m_ticks;
}

bool DMA_Source::is_held_back() const {
    const std::lock_guard lock(m_mutex);
    return m_held_back;
}

void DMA_Source::fail_read(std::uint64_t read, DMA_Read_Fault fault) {
    const std::lock_guard lock(m_mutex);
    m_faults[read] = fault;
}

std::uint64_t DMA_Source::reads() const {
    const std::lock_guard lock(m_mutex);
    return m_reads;
}

void DMA_Source::set_observer(Observer observer) {
    const std::lock_guard lock(m_mutex);
    m_observer = std::move(observer);
}

std::uint32_t DMA_Source::read(bool complete) {
    const std::lock_guard reading(m_read_mutex);
    const auto fault = begin_read();
    if (fault && fault->kind == DMA_Read_Fault::Kind::fails) {
        throw std::runtime_error("c2h transfer failed");
    }
    const bool is_short = fault && fault->kind == DMA_Read_Fault::Kind::short_read;
    std::uint32_t total = fill(is_short ? std::min(m_size, fault->bytes) : m_size, complete);
    // The read that is under way may have been given one since.
    const auto late_fault = fault_of_this_read();
    if (late_fault && late_fault->kind == DMA_Read_Fault::Kind::fails_late) {
        throw std::runtime_error("c2h transfer failed");
    }
    if (late_fault && late_fault->kind == DMA_Read_Fault::Kind::stalls) {
        stall();
    }
    Observer observer;
    {
        const std::lock_guard lock(m_mutex);
        observer = m_observer;
    }
    if (observer && total > 0) {
        observer({m_buffer, total});
    }
    if (late_fault && late_fault->kind == DMA_Read_Fault::Kind::over_long) {
        total += late_fault->bytes;
    }
    return total;
}

std::optional<DMA_Read_Fault> DMA_Source::begin_read() {
    const std::lock_guard lock(m_mutex);
    ++m_reads;
    const auto fault = m_faults.find(m_reads);
    return fault == m_faults.end() ? std::nullopt : std::optional(fault->second);
}

std::optional<DMA_Read_Fault> DMA_Source::fault_of_this_read() const {
    const std::lock_guard lock(m_mutex);
    const auto fault = m_faults.find(m_reads);
    return fault == m_faults.end() ? std::nullopt : std::optional(fault->second);
}

void DMA_Source::stall() {
    std::unique_lock lock(m_mutex);
    m_stalled = true;
    m_changed.wait_for(lock, patience, [&] { return !m_stalled; });
}

bool DMA_Source::is_stalled() const {
    const std::lock_guard lock(m_mutex);
    return m_stalled;
}

void DMA_Source::release_stalled_read() {
    const std::lock_guard lock(m_mutex);
    m_stalled = false;
    m_changed.notify_all();
}

std::uint32_t DMA_Source::fill(std::uint32_t size, bool complete) {
    std::uint64_t stops = 0;
    {
        const std::lock_guard lock(m_mutex);
        stops = m_stops;
        apply(std::exchange(m_changes, {}));
    }
    std::uint32_t total = 0;
    while (total < size) {
        const auto bytes = m_rows->take(size - total);
        if (!bytes.empty()) {
            std::copy(bytes.begin(), bytes.end(), m_buffer + total);
            total += static_cast<std::uint32_t>(bytes.size());
            continue;
        }
        const auto tick = next_tick(stops, complete || total == 0);
        if (!tick) {
            break;
        }
        apply(tick->changes);
        m_rows->make_tick(tick->enables);
    }
    return total;
}

// The sources of the next tick; nothing when the read has to end without it.
std::optional<DMA_Source::Tick> DMA_Source::next_tick(std::uint64_t stops, bool wait) {
    std::unique_lock lock(m_mutex);
    const auto ends = [&] { return !m_connected || m_stops != stops || !m_enables.any(); };
    if (m_ticks >= m_limit && wait && !ends() && m_enables.any_port()) {
        m_held_back = true;
        m_changed.wait_for(lock, patience, [&] { return m_ticks < m_limit || ends(); });
        m_held_back = false;
    }
    if (m_stops != stops) {
        return std::nullopt;
    }
    if (ends() || m_ticks >= m_limit) {
        m_changed.wait_for(lock, idle_wait);
        return std::nullopt;
    }
    ++m_ticks;
    return Tick{m_enables, std::exchange(m_changes, {})};
}

void DMA_Source::apply(const Changes& changes) {
    if (changes.reset) {
        m_rows->reset();
    }
    for (std::size_t port = 0; port < box_port_count; ++port) {
        if (changes.restarted[port]) {
            m_rows->restart_probe(port);
        }
    }
}

} // namespace Pelgar::ORBE::test
