// Layer: façade, host mode. Whether a device's packets are wanted: from its trigger until it is armed or
// closed. Each such run has a number, so that a packet made for one run is not taken for another's. Any
// thread; nothing blocks.
#pragma once

#include <atomic>
#include <cstdint>

namespace Pelgar::ORBE::npoe_adapter {

using Run_Number = std::uint32_t;

inline constexpr Run_Number no_run = 0;

class Run_Gate {
public:
    void open() { m_run.store(++m_last, std::memory_order_release); }

    void close() { m_run.store(no_run, std::memory_order_release); }

    // `no_run` while it is closed.
    Run_Number run() const { return m_run.load(std::memory_order_acquire); }

private:
    Run_Number m_last = no_run; // of the threads that open, one at a time
    std::atomic<Run_Number> m_run{no_run};
};

} // namespace Pelgar::ORBE::npoe_adapter
