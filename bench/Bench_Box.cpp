#include "Bench_Box.h"

#include "Process_Counters.h"

#include <chrono>
#include <thread>

namespace Pelgar::ORBE::bench {

namespace {

// The Neuropixels design with four ports, all of whose links are locked.
constexpr std::uint32_t signature_address = 0x0208;
constexpr std::uint32_t neuropixels_signature = 0x4E50'0040;
constexpr std::uint32_t link_locks_address = 0x0200;
constexpr std::uint32_t all_links_locked = 0xF;

constexpr auto idle_wait = std::chrono::milliseconds(1);

// Transfers at the beginning of a round that still bring its jumps to the workers: those of a block and more.
constexpr std::uint64_t unsteady_bytes = std::uint64_t{24} << 20;

} // namespace

Bench_Box::Bench_Box(const Bench_Stream& stream, std::size_t bytes_a_transfer)
    : m_stream(stream), m_transfer_bytes(bytes_a_transfer) {
    create_modules();
}

void Bench_Box::prepare(Permission permission, std::size_t most_transfers) {
    m_permission = std::move(permission);
    m_times.assign(most_transfers, 0);
}

void Bench_Box::write_register(std::uint32_t address, std::uint32_t value) {
    m_registers.at(address / 4) = value;
}

std::uint32_t Bench_Box::read_register(std::uint32_t address) {
    switch (address) {
    case signature_address:
        return neuropixels_signature;
    case link_locks_address:
        return all_links_locked;
    default:
        return m_registers.at(address / 4);
    }
}

bool Bench_Box::open_driver_connection(const std::string& /*device_name*/, bool /*flag*/) {
    return true;
}

bool Bench_Box::set_extended_property(std::uint32_t /*key*/, std::uint32_t /*value*/) {
    return false;
}

bool Bench_Box::setup_read(std::uint8_t* buffer, std::uint32_t size, std::uint8_t /*flag*/,
                           std::uint32_t /*extra*/) {
    m_buffer = buffer;
    m_size = size;
    return true;
}

std::uint32_t Bench_Box::read_stream(std::uint64_t /*unused*/, bool /*complete*/) {
    const std::uint64_t transfer = m_transfers.load(std::memory_order_relaxed);
    const std::uint64_t begin = transfer * m_transfer_bytes;
    while (!m_stopped) {
        const std::chrono::nanoseconds wait =
            transfer < m_times.size() ? m_permission(begin + m_transfer_bytes) : idle_wait;
        if (wait <= std::chrono::nanoseconds::zero()) {
            break;
        }
        std::this_thread::sleep_for(wait);
    }
    if (m_stopped) {
        return 0;
    }
    note_allocations(transfer);
    const std::uint64_t cpu_before = own_cpu_ns();
    m_stream.copy(begin, m_buffer, m_size);
    m_copy_cpu_ns += own_cpu_ns() - cpu_before;
    m_times[transfer] = steady_ns();
    m_transfers.store(transfer + 1, std::memory_order_release);
    return m_size;
}

void Bench_Box::note_allocations(std::uint64_t transfer) {
    const std::uint64_t in_round = transfer * m_transfer_bytes % m_stream.bytes().size();
    const bool steady = transfer * m_transfer_bytes >= m_stream.bytes().size() && in_round >= unsteady_bytes;
    const std::uint64_t allocations = allocation_count();
    if (steady && m_in_steady_part) {
        m_steady_allocations += allocations - m_allocations_before;
        ++m_steady_transfers;
    }
    m_allocations_before = allocations;
    m_in_steady_part = steady;
}

void Bench_Box::write_xdma_register(std::uint32_t /*address*/, std::uint32_t /*value*/) {}

std::uint32_t Bench_Box::read_xdma_register(std::uint32_t /*address*/) {
    return 0;
}

} // namespace Pelgar::ORBE::bench
