// Layer: façade, host mode. The voltage range and the comparators of the ADC inputs, as a host sets them. The
// host's threads set, the RHD worker thread compares; that takes no lock.
#pragma once

#include "NeuropixAPI.h"
#include "common/Relaxed.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <span>

namespace Pelgar::ORBE::npoe_adapter {

// What hosts see of them; the box has eight.
inline constexpr std::size_t host_adc_input_count = 12;

class ADC_Inputs {
public:
    ADC_Inputs() { reset(); }

    // As before any host: 5 V, thresholds between the levels of TTL signals, all comparators low. Not while
    // samples come.
    void reset();

    // False for what is no range.
    bool set_range(Neuropixels::ADCrange_t range);
    Neuropixels::ADCrange_t range() const;

    struct Thresholds {
        double low = 0.0; // V
        double high = 0.0;
    };

    // False when there is no such input, or the low one lies above the high one.
    bool set_thresholds(int input, const Thresholds& thresholds);
    bool get_thresholds(int input, Thresholds& thresholds) const;

    // Bit i: input i was above its high threshold and has not been below its low one since. The RHD worker
    // thread, once a sample; inputs that the box does not have stay low.
    std::uint32_t compare(std::span<const std::int16_t> samples);

private:
    void update();

    mutable std::mutex m_mutex; // guards what the host has set
    Neuropixels::ADCrange_t m_range{};
    std::array<Thresholds, host_adc_input_count> m_thresholds{};
    // The same in the samples' own numbers: below the one, above the other.
    std::array<Relaxed<std::int32_t>, host_adc_input_count> m_low;
    std::array<Relaxed<std::int32_t>, host_adc_input_count> m_high;
    std::uint32_t m_states = 0; // of the RHD worker thread
};

} // namespace Pelgar::ORBE::npoe_adapter
