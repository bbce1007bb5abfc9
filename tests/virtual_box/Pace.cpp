#include "Pace.h"

#include <algorithm>

namespace Pelgar::ORBE::test {

namespace {

// A queue holds 501 packets. An electrode packet is made of twelve ticks, an ADC packet of one.
constexpr std::uint64_t ticks_per_port_packet = 12;
constexpr std::uint64_t port_window = 500 * ticks_per_port_packet;
constexpr std::uint64_t adc_window = 480;

} // namespace

Pace::Pace(DMA_Source& source) : m_source(source), m_first_tick(source.ticks()) {
    const std::lock_guard lock(m_mutex);
    update();
}

void Pace::set_target(std::uint64_t ticks) {
    const std::lock_guard lock(m_mutex);
    m_target = ticks;
    update();
}

void Pace::received(std::size_t reader) {
    const std::lock_guard lock(m_mutex);
    ++m_received.at(reader);
    update();
}

void Pace::release(std::size_t reader) {
    const std::lock_guard lock(m_mutex);
    m_released.at(reader) = true;
    update();
}

std::uint64_t Pace::count(std::size_t reader) const {
    const std::lock_guard lock(m_mutex);
    return m_received.at(reader);
}

void Pace::update() {
    std::uint64_t limit = m_target;
    for (std::size_t reader = 0; reader < reader_count; ++reader) {
        if (!m_released[reader]) {
            const bool adc = reader == adc_reader;
            const std::uint64_t ticks = m_received[reader] * (adc ? 1 : ticks_per_port_packet);
            limit = std::min(limit, m_first_tick + ticks + (adc ? adc_window : port_window));
        }
    }
    m_source.set_limit(limit);
}

} // namespace Pelgar::ORBE::test
