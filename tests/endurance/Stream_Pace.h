// Endurance test. How far the stream may run ahead of the readers, so that it goes as fast as they do and no
// queue of the library, which drop what they cannot hold, overflows. Any thread; whoever is told of the limit
// is called with a lock held.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <mutex>

namespace Pelgar::ORBE::test {

class Stream_Pace {
public:
    static constexpr std::size_t adc_reader = 4; // 0 to 3 are the ports
    static constexpr std::size_t reader_count = 5;

    // Ticks that the library may hold for a port's reader, and for that of the ADC inputs.
    struct Windows {
        std::uint64_t port;
        std::uint64_t adc;
    };

    Stream_Pace(const Windows& windows, unsigned ports, std::function<void(std::uint64_t)> set_limit);

    // From now on so many ticks may be made, as the readers allow. Nobody reads yet.
    void begin(std::uint64_t target);

    // A reader has received the packets of so many ticks since `begin`.
    void received(std::size_t reader, std::uint64_t ticks);

    // The library has been given so many ticks since `begin`: a reader that has taken nearly all of them will
    // wait, and says so at once.
    void handed_over(std::uint64_t ticks) { m_handed_over.store(ticks, std::memory_order_relaxed); }

    // The fewest of all readers.
    std::uint64_t received_by_all() const;

private:
    void update();

    Windows m_windows;
    unsigned m_ports;
    std::function<void(std::uint64_t)> m_set_limit;
    std::array<std::atomic<std::uint64_t>, reader_count> m_received{};
    std::atomic<std::uint64_t> m_handed_over{0};
    std::mutex m_mutex;
    std::uint64_t m_target = 0;
};

} // namespace Pelgar::ORBE::test
