#include "Stream_Pace.h"

#include <algorithm>
#include <utility>

namespace Pelgar::ORBE::test {

namespace {

// A reader tells what it has received every so many ticks, and when so few may be left that it waits.
constexpr std::uint64_t told_every = 64;
constexpr std::uint64_t nearly_all = 4;

} // namespace

Stream_Pace::Stream_Pace(const Windows& windows, unsigned ports, std::function<void(std::uint64_t)> set_limit)
    : m_windows(windows), m_ports(ports), m_set_limit(std::move(set_limit)) {}

void Stream_Pace::begin(std::uint64_t target) {
    {
        const std::lock_guard lock(m_mutex);
        m_target = target;
        for (auto& received : m_received) {
            received = 0;
        }
        m_handed_over = 0;
    }
    update();
}

void Stream_Pace::received(std::size_t reader, std::uint64_t ticks) {
    const std::uint64_t before = m_received.at(reader).exchange(ticks);
    if (ticks / told_every != before / told_every ||
        ticks + nearly_all >= m_handed_over.load(std::memory_order_relaxed)) {
        update();
    }
}

void Stream_Pace::update() {
    const std::lock_guard lock(m_mutex);
    std::uint64_t limit = std::min(m_target, m_received[adc_reader] + m_windows.adc);
    for (std::size_t port = 0; port < m_ports; ++port) {
        limit = std::min(limit, m_received[port] + m_windows.port);
    }
    m_set_limit(limit);
}

std::uint64_t Stream_Pace::received_by_all() const {
    std::uint64_t fewest = m_received[adc_reader];
    for (std::size_t port = 0; port < m_ports; ++port) {
        fewest = std::min<std::uint64_t>(fewest, m_received[port]);
    }
    return fewest;
}

} // namespace Pelgar::ORBE::test
