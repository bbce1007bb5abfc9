#include "expectation/Channel_Sorter.h"

#include "stream_format/Channel_Map.h"

namespace Pelgar::ORBE::recording {

namespace {

// Where in the frame each ADC's sample is, and to which channel it goes in slot 0.
struct Route {
    std::uint16_t word;
    std::uint16_t channel;
};

constexpr std::array<Route, adc_count> make_routes() {
    std::array<Route, adc_count> routes{};
    for (std::size_t adc = 0; adc < adc_count; ++adc) {
        routes[adc] = {static_cast<std::uint16_t>(word_of_value(adc)),
                       static_cast<std::uint16_t>(channel_of(adc, 0))};
    }
    return routes;
}

constexpr std::array<Route, adc_count> routes = make_routes();

void place(Frame frame, std::size_t slot, Channel_Values& values) {
    for (const Route& route : routes) {
        values[route.channel + 2 * slot] = frame[route.word] & sample_mask;
    }
}

} // namespace

Channel_Sorter::Result Channel_Sorter::sort(Frame frame) {
    const std::uint32_t counter = extended_counter(frame);
    const std::uint32_t phase = counter % frames_per_super_frame;
    if (phase == 0) {
        const std::size_t slot = counter / frames_per_super_frame % slots_per_sample;
        place(frame, slot, m_lfp);
        return slot == slots_per_sample - 1 ? Result::lfp_sample : Result::nothing;
    }
    place(frame, phase - 1, m_ap);
    return phase == slots_per_sample ? Result::ap_sample : Result::nothing;
}

std::uint32_t Channel_Sorter::extended_counter(Frame frame) {
    const std::uint16_t high = frame[word_of_value(counter_high_index)] & sample_mask;
    const std::uint16_t low = frame[word_of_value(counter_low_index)] & sample_mask;
    if (high == 0 && m_previous_high == sample_mask) {
        // Wraps are counted in 16 bits, of which the lowest twelve show in the extended counter.
        m_wraps = (m_wraps + 1) & 0xFFFF;
    }
    m_previous_high = high;
    return (m_wraps << counter_bits) | static_cast<std::uint32_t>(high << counter_half_bits) | low;
}

} // namespace Pelgar::ORBE::recording
