#include "packets/RHD_to_PXI_ADC_Format_Converter.h"

#include "common/Console.h"
#include "common/Relaxed.h"

#include <cstring>

namespace Pelgar::ORBE::npoe_adapter {

namespace {

// Offset binary to two's complement.
constexpr std::uint16_t adc_offset = 32768;

// The status word carries bits 9..17 of the TTL word in its bits 7..15 and "an input has changed" in bit 6.
constexpr unsigned ttl_word_shift = 8;
constexpr std::uint32_t ttl_inputs_mask = 0xFFFE;
constexpr std::uint32_t ttl_changed_flag = 1;
constexpr unsigned status_shift = 6;

// The low half of the last TTL word, kept across openings. The comparison below is with the whole word, so
// that an input in its upper half counts as a change on every frame.
Relaxed<std::uint16_t> g_last_ttl{0};

std::uint16_t status_of(std::uint32_t ttl) {
    std::uint32_t base = (ttl >> ttl_word_shift) & ttl_inputs_mask;
    if (ttl != g_last_ttl.load()) {
        console::out("TTL input value change in RHD Frame : ", console::Hex{ttl}, "\n");
        base |= ttl_changed_flag;
        g_last_ttl = static_cast<std::uint16_t>(ttl);
    }
    return static_cast<std::uint16_t>(base << status_shift);
}

} // namespace

RHD_to_PXI_ADC_Format_Converter::RHD_to_PXI_ADC_Format_Converter() {
    console::out("RHD_to_PXI_ADC_Format_Converter ctor\n");
}

void RHD_to_PXI_ADC_Format_Converter::publish_rhd_frame(demux::RHD_Frame& frame) {
    static_assert(adc_input_count == demux::rhd_board_adc_count);
    ADC_Packet_Record record{};
    for (std::size_t input = 0; input < adc_input_count; ++input) {
        record.samples[input] = static_cast<std::int16_t>(frame.board_adc_data[input] + adc_offset);
    }
    record.status = status_of(frame.ttl_in);
    m_queue.push(record);
}

void RHD_to_PXI_ADC_Format_Converter::burst_begins() {
    m_queue.begin_burst();
}

void RHD_to_PXI_ADC_Format_Converter::burst_ends() {
    m_queue.end_burst();
}

void RHD_to_PXI_ADC_Format_Converter::read_sample_packet_to_buffer(std::int16_t* dst, std::uint16_t* status,
                                                                   std::size_t wanted) {
    const ADC_Packet_Record* record = m_queue.peek_xfer_buffer_from_queue(wanted);
    if (m_queue.signalled_for_exit()) {
        console::out("RHD_to_PXI_ADC_Format_Converter::read_sample_packet_to_buffer signalled for exit\n");
        return;
    }
    if (dst != nullptr) {
        std::memcpy(dst, record->samples, sizeof(record->samples));
        std::memcpy(dst + adc_input_count, record->reserved, sizeof(record->reserved));
    }
    if (status != nullptr) {
        *status = record->status;
    }
    m_queue.pop();
}

} // namespace Pelgar::ORBE::npoe_adapter
