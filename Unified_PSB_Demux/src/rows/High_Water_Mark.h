// Layer: demultiplexer. The largest number of elements that a queue ever held. Any thread; never blocks.
#pragma once

#include <atomic>
#include <cstdint>

namespace Pelgar::ORBE::demux {

class High_Water_Mark {
public:
    // Raises the mark to `count` and tells whether it was lower.
    bool raise(std::uint32_t count) {
        std::uint32_t highest = m_mark.load(std::memory_order_relaxed);
        while (count > highest) {
            if (m_mark.compare_exchange_weak(highest, count, std::memory_order_relaxed)) {
                return true;
            }
        }
        return false;
    }

private:
    std::atomic<std::uint32_t> m_mark{0};
};

} // namespace Pelgar::ORBE::demux
