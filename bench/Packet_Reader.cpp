#include "Packet_Reader.h"

#include "Process_Counters.h"

#include <algorithm>
#include <utility>

namespace Pelgar::ORBE::bench {

Packet_Reader::Packet_Reader(Read read, int asked, std::size_t most_packets)
    : m_read(std::move(read)), m_asked(asked), m_times(most_packets), m_thread([this] { work(); }) {}

Packet_Reader::~Packet_Reader() {
    join();
}

void Packet_Reader::join() {
    if (m_thread.joinable()) {
        m_thread.join();
    }
}

void Packet_Reader::work() {
    m_thread_id = own_thread_id();
    int got = 0;
    do {
        got = m_read();
        const std::int64_t now = steady_ns();
        const std::uint64_t first = m_packets.load(std::memory_order_relaxed);
        const std::uint64_t end = first + static_cast<std::uint64_t>(got);
        const std::uint64_t kept = std::min<std::uint64_t>(end, m_times.size());
        for (std::uint64_t packet = first; packet < kept; ++packet) {
            m_times[packet] = now;
        }
        m_packets.store(end, std::memory_order_release);
    } while (got == m_asked);
}

} // namespace Pelgar::ORBE::bench
