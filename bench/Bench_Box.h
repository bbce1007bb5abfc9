// Benchmarks: a back-end whose registers are plain memory and whose DMA stream sends a prepared stream round
// and round, at the box's pace or as fast as the library lets it. Reads come on the pump thread and block;
// everything else may be asked on any thread.
#pragma once

#include "Bench_Stream.h"

#include "connection/A_ORBE_Controller.h"

#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace Pelgar::ORBE::bench {

class Bench_Box final : public A_ORBE_Controller {
public:
    static constexpr std::size_t transfer_bytes = std::size_t{1} << 20;

    // Transfers have 1 MiB, or what the library asks for instead.
    explicit Bench_Box(const Bench_Stream& stream, std::size_t bytes_a_transfer = transfer_bytes);
    ~Bench_Box() override = default;

    // How long a read that would deliver the stream up to the position has to wait before it asks again; not
    // at all when it may deliver.
    using Permission = std::function<std::chrono::nanoseconds(std::uint64_t end)>;

    // Before the reads begin. Times are kept for so many transfers.
    void prepare(Permission permission, std::size_t most_transfers);

    // Reads answer 0 bytes from now on.
    void stop() { m_stopped = true; }

    std::uint64_t transfers() const { return m_transfers.load(std::memory_order_acquire); }

    // When the driver handed out the transfer in which the position lies: the pump pushes it at once. Steady
    // clock, nanoseconds. Not while reads are under way.
    std::int64_t delivery_time(std::uint64_t end) const { return m_times[(end - 1) / m_transfer_bytes]; }

    std::int64_t transfer_time(std::uint64_t transfer) const { return m_times[transfer]; }

    std::uint64_t most_transfers() const { return m_times.size(); }

    // What the copies into the receive buffer cost, which the card makes on the box. CPU nanoseconds of the
    // pump thread.
    std::uint64_t copy_cpu_ns() const { return m_copy_cpu_ns; }

    // Allocations made while the middle of a round was on its way: the stream's end and beginning have jumps
    // in the frame counters, which are reported and so allocate.
    std::uint64_t steady_allocations() const { return m_steady_allocations; }

    std::uint64_t steady_transfers() const { return m_steady_transfers; }

    void write_register(std::uint32_t address, std::uint32_t value) override;
    std::uint32_t read_register(std::uint32_t address) override;
    bool open_driver_connection(const std::string& device_name, bool flag) override;

    void close_driver_connection() override {}

    bool set_extended_property(std::uint32_t key, std::uint32_t value) override;
    bool setup_read(std::uint8_t* buffer, std::uint32_t size, std::uint8_t flag,
                    std::uint32_t extra) override;
    std::uint32_t read_stream(std::uint64_t unused, bool complete) override;
    void write_xdma_register(std::uint32_t address, std::uint32_t value) override;
    std::uint32_t read_xdma_register(std::uint32_t address) override;

private:
    void note_allocations(std::uint64_t transfer);

    const Bench_Stream& m_stream;
    const std::size_t m_transfer_bytes;
    std::array<std::uint32_t, 0x4000> m_registers{};
    std::uint8_t* m_buffer = nullptr;
    std::uint32_t m_size = 0;
    Permission m_permission;
    std::vector<std::int64_t> m_times;
    std::atomic<std::uint64_t> m_transfers{0};
    std::atomic<std::uint64_t> m_copy_cpu_ns{0};
    std::atomic<std::uint64_t> m_steady_allocations{0};
    std::atomic<std::uint64_t> m_steady_transfers{0};
    std::uint64_t m_allocations_before = 0;
    bool m_in_steady_part = false;
    std::atomic<bool> m_stopped{false};
};

} // namespace Pelgar::ORBE::bench
