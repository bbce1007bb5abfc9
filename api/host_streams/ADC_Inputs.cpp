#include "host_streams/ADC_Inputs.h"

#include <algorithm>
#include <cmath>

namespace Pelgar::ORBE::npoe_adapter {

namespace {

using namespace Neuropixels;

constexpr std::array<double, 3> range_volts{2.5, 5.0, 10.0}; // by ADCrange_t
constexpr double full_scale = 32768.0;
// Between what a TTL output calls low and high.
constexpr ADC_Inputs::Thresholds ttl_thresholds{0.8, 2.0};

bool is_input(int input) {
    return input >= 0 && input < static_cast<int>(host_adc_input_count);
}

// In the samples' own numbers, which reach from -32768 to 32767; within what an integer holds.
double in_samples(double volts, double range) {
    return std::clamp(volts / range, -2.0, 2.0) * full_scale;
}

} // namespace

void ADC_Inputs::reset() {
    const std::lock_guard lock(m_mutex);
    m_range = ADC_RANGE_5V;
    m_thresholds.fill(ttl_thresholds);
    m_states = 0;
    update();
}

bool ADC_Inputs::set_range(ADCrange_t range) {
    const std::lock_guard lock(m_mutex);
    if (static_cast<unsigned>(range) >= range_volts.size()) {
        return false;
    }
    m_range = range;
    update();
    return true;
}

ADCrange_t ADC_Inputs::range() const {
    const std::lock_guard lock(m_mutex);
    return m_range;
}

bool ADC_Inputs::set_thresholds(int input, const Thresholds& thresholds) {
    const std::lock_guard lock(m_mutex);
    if (!is_input(input) || !(thresholds.low <= thresholds.high)) {
        return false;
    }
    m_thresholds[static_cast<std::size_t>(input)] = thresholds;
    update();
    return true;
}

bool ADC_Inputs::get_thresholds(int input, Thresholds& thresholds) const {
    const std::lock_guard lock(m_mutex);
    if (!is_input(input)) {
        return false;
    }
    thresholds = m_thresholds[static_cast<std::size_t>(input)];
    return true;
}

void ADC_Inputs::update() {
    const double range = range_volts[static_cast<std::size_t>(m_range)];
    for (std::size_t input = 0; input < host_adc_input_count; ++input) {
        m_low[input] = static_cast<std::int32_t>(std::ceil(in_samples(m_thresholds[input].low, range)));
        m_high[input] = static_cast<std::int32_t>(std::floor(in_samples(m_thresholds[input].high, range)));
    }
}

std::uint32_t ADC_Inputs::compare(std::span<const std::int16_t> samples) {
    for (std::size_t input = 0; input < samples.size(); ++input) {
        const std::uint32_t bit = std::uint32_t{1} << input;
        if (samples[input] > m_high[input].load()) {
            m_states |= bit;
        } else if (samples[input] < m_low[input].load()) {
            m_states &= ~bit;
        }
    }
    return m_states;
}

} // namespace Pelgar::ORBE::npoe_adapter
