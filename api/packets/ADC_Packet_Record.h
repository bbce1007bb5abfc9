// Layer: façade. One frame of the RHD headstage's auxiliary ADC inputs, as it waits for the host.
#pragma once

#include <cstddef>
#include <cstdint>

namespace Pelgar::ORBE::npoe_adapter {

inline constexpr std::size_t adc_input_count = 8;
inline constexpr std::size_t adc_reserved_count = 4;
// int16 values that one packet takes in the host's buffer.
inline constexpr std::size_t adc_packet_length = adc_input_count + adc_reserved_count;

struct ADC_Packet_Record {
    std::int16_t samples[adc_input_count];
    std::int16_t reserved[adc_reserved_count]; // 0
    std::uint16_t status;
};

} // namespace Pelgar::ORBE::npoe_adapter
