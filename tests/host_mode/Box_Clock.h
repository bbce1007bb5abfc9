// Test support, host mode. The pace of the box, for the virtual one. Runs a thread of its own while it lives.
#pragma once

#include "DMA_Source.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <thread>

namespace Pelgar::ORBE::test {

// Lets the box run at its own pace, or behind it where the computer cannot keep up.
class Box_Clock {
public:
    explicit Box_Clock(DMA_Source& source) : m_source(source), m_thread([this] { run(); }) {}

    ~Box_Clock() {
        m_ending = true;
        m_thread.join();
        m_source.set_limit(DMA_Source::unlimited);
    }

    Box_Clock(const Box_Clock&) = delete;
    Box_Clock& operator=(const Box_Clock&) = delete;

    static constexpr std::uint64_t ticks_per_second = 30'000;

private:
    void run() {
        const auto begin = std::chrono::steady_clock::now();
        const std::uint64_t first = m_source.ticks();
        while (!m_ending) {
            const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - begin;
            m_source.set_limit(first + static_cast<std::uint64_t>(elapsed.count() * ticks_per_second));
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }

    DMA_Source& m_source;
    std::atomic<bool> m_ending{false};
    std::thread m_thread; // the last, since it uses the others
};

} // namespace Pelgar::ORBE::test
