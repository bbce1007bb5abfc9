#include "ADC_Models.h"

#include <cstdio>

namespace Pelgar::ORBE::road_model {

namespace {

constexpr std::size_t box_inputs = 8;
constexpr std::size_t host_inputs = 12;

std::string hexadecimal(std::uint32_t number) {
    char digits[16];
    std::snprintf(digits, sizeof digits, "%x", static_cast<unsigned>(number));
    return digits;
}

std::int16_t sample(std::uint16_t word) {
    return static_cast<std::int16_t>(static_cast<int>(word) - 32768);
}

} // namespace

void Own_ADC::take(const RHD_Frame_Words& frame) {
    ADC_Packet packet;
    for (std::size_t input = 0; input < box_inputs; ++input) {
        packet.row[input] = sample(frame.adc[input]);
    }
    std::uint32_t base = frame.ttl / 256 % 65536 / 2 * 2;
    if (frame.ttl != m_process.last_ttl) {
        m_told.out += "TTL input value change in RHD Frame : " + hexadecimal(frame.ttl) + "\n";
        base += 1;
        m_process.last_ttl = frame.ttl % 65536;
    }
    packet.status = static_cast<std::uint16_t>(base * 64 % 65536);
    if (queue.size() <= 500) {
        queue.push_back(packet);
    } else if (m_process.adc_packet_drops++ % 256 == 0) {
        m_told.log.emplace_back("0 MT_NP_PXI_Queue overflow");
    }
}

void Host_ADC::begin_run() {
    queue.clear();
    m_is_running = true;
}

void Host_ADC::end_run() {
    queue.clear();
    m_is_running = false;
}

void Host_ADC::take(const RHD_Frame_Words& frame) {
    // 2.0 V and 0.8 V of 5 V, in samples of 15 bits and a sign.
    constexpr int high = 13107;
    constexpr int low = 5243;

    ADC_Packet packet;
    for (std::size_t input = 0; input < box_inputs; ++input) {
        packet.row[input] = sample(frame.adc[input]);
        if (packet.row[input] > high) {
            m_comparators |= 1U << input;
        } else if (packet.row[input] < low) {
            m_comparators &= ~(1U << input);
        }
    }
    // The inputs that the box does not have show its first four TTL inputs.
    const std::uint32_t comparators = m_comparators + frame.ttl / 256 % 16 * 256;
    for (std::size_t input = 0; input < host_inputs; ++input) {
        packet.row[host_inputs + input] = static_cast<std::int16_t>(comparators >> input & 1U);
    }
    for (std::size_t column = m_row_length; column < longest_adc_row; ++column) {
        packet.row[column] = 0;
    }

    if (m_streaming != m_wanted_streaming) {
        m_streaming = m_wanted_streaming;
        m_numbers.restart();
        m_sync.restart(m_streaming);
    }
    const auto step = static_cast<std::int32_t>(frame.stamp - m_last_stamp);
    m_last_stamp = frame.stamp;
    const std::uint64_t number = m_numbers.next(step);
    const bool is_high = m_sync.record(number, (frame.ttl & 0xFF00U) | comparators << 16U);
    packet.stamp = Sample_Numbers::stamp(number);
    packet.status = is_high ? 64 : 0;
    packet.payload = static_cast<std::uint16_t>(m_row_length);
    if (m_is_running) {
        queue.push_back(packet);
    }
}

} // namespace Pelgar::ORBE::road_model
