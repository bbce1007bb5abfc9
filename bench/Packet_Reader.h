// Benchmarks: a host's reader thread, for one probe port or for the ADC packets. Notes when each packet came.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <thread>
#include <vector>

namespace Pelgar::ORBE::bench {

class Packet_Reader {
public:
    // Reads once, blocking, and answers how many packets came; fewer than asked for end the thread.
    using Read = std::function<int()>;

    // Times of up to `most_packets` are kept.
    Packet_Reader(Read read, int asked, std::size_t most_packets);
    // Blocks until the thread has ended.
    ~Packet_Reader();
    Packet_Reader(const Packet_Reader&) = delete;
    Packet_Reader& operator=(const Packet_Reader&) = delete;

    std::uint64_t packets() const { return m_packets.load(std::memory_order_acquire); }

    // Steady clock, nanoseconds; after `join`.
    std::int64_t time(std::uint64_t packet) const { return m_times[packet]; }

    std::size_t kept_times() const { return m_times.size(); }

    std::int64_t thread_id() const { return m_thread_id; }

    void join();

private:
    void work();

    Read m_read;
    int m_asked;
    std::vector<std::int64_t> m_times;
    std::atomic<std::uint64_t> m_packets{0};
    std::atomic<std::int64_t> m_thread_id{0};
    std::thread m_thread;
};

} // namespace Pelgar::ORBE::bench
