#include "ADC_Follower.h"

#include "numbers/Hash.h"

namespace Pelgar::ORBE::test {

namespace {

constexpr std::size_t input_count = 8;
constexpr std::uint16_t offset_binary = 0x8000;

// How far a packet that is not the next one is looked for.
constexpr std::uint64_t furthest = 20'000;

} // namespace

ADC_Follower::ADC_Follower(std::uint64_t seed)
    : m_generator(0, recording::mix(seed, recording::rhd_stream)) {}

void ADC_Follower::take(const std::int16_t* inputs) {
    ++m_packets;
    if (is_frame(m_next, inputs)) {
        ++m_next;
        ++m_streak;
        return;
    }
    m_streak = 0;
    for (std::uint64_t frame = m_next + 1; frame < m_next + furthest; ++frame) {
        if (is_frame(frame, inputs)) {
            m_lost += m_packets == 1 ? 0 : frame - m_next; // a host that opens the box later begins later
            m_next = frame + 1;
            return;
        }
    }
    ++m_wrong;
}

bool ADC_Follower::is_frame(std::uint64_t frame, const std::int16_t* inputs) const {
    for (std::size_t input = 0; input < input_count; ++input) {
        const auto shown = static_cast<std::uint16_t>(m_generator.adc_input(frame, input) - offset_binary);
        if (inputs[input] != static_cast<std::int16_t>(shown)) {
            return false;
        }
    }
    return true;
}

} // namespace Pelgar::ORBE::test
