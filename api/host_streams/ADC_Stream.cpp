#include "host_streams/ADC_Stream.h"

#include "host_streams/Sample_Stamp.h"

namespace Pelgar::ORBE::npoe_adapter {

namespace {

// Offset binary to two's complement.
constexpr std::uint16_t adc_offset = 32768;

// The comparators of the inputs that the box does not have show its first TTL inputs.
constexpr std::uint32_t ttl_comparators = 0x0F00;

std::int16_t element(std::size_t column, std::span<const std::int16_t> samples, std::uint32_t comparators) {
    if (column < samples.size()) {
        return samples[column];
    }
    if (column < host_adc_input_count || column >= 2 * host_adc_input_count) {
        return 0;
    }
    return static_cast<std::int16_t>((comparators >> (column - host_adc_input_count)) & 1U);
}

} // namespace

ADC_Stream::ADC_Stream(ADC_Inputs& inputs, const Sync_Source& sync_source, Sync_Levels& sync_levels)
    : m_inputs(inputs), m_sync_source(sync_source), m_sync_levels(sync_levels) {}

void ADC_Stream::publish_rhd_frame(demux::RHD_Frame& frame) {
    Record record{};
    for (std::size_t input = 0; input < record.samples.size(); ++input) {
        record.samples[input] = static_cast<std::int16_t>(frame.board_adc_data[input] + adc_offset);
    }
    static_assert(first_ttl_bit == demux::rhd_board_adc_count, "the first TTL input has the next bit");
    record.comparators = m_inputs.compare(record.samples) | (frame.ttl_in & ttl_comparators);

    const std::uint64_t sample = follow(frame.timestamp);
    const bool input_level =
        m_sync_source.input_level((frame.ttl_in & ttl_bits) | (record.comparators << first_comparator_bit));
    m_sync_levels.record(sample, input_level);

    record.run = m_gate.run();
    if (record.run == no_run) {
        return;
    }
    record.stamp = stamp_of(sample);
    record.sync = input_level || m_sync_source.clock_level(sample);
    if (!m_ring.push([&record](Record& queued) { queued = record; })) {
        m_drops.count();
    }
}

// The number of the sample with this stamp of 32 bits.
std::uint64_t ADC_Stream::follow(std::uint32_t frame_stamp) {
    const std::uint32_t streaming = m_streaming.load(std::memory_order_acquire);
    if (streaming != m_seen_streaming) {
        m_seen_streaming = streaming;
        m_count.restart();
        m_sync_levels.restart(streaming);
    }
    const std::uint32_t step = frame_stamp - static_cast<std::uint32_t>(m_counter);
    m_counter += static_cast<std::uint64_t>(static_cast<std::int64_t>(static_cast<std::int32_t>(step)));
    return m_count.number_of(m_counter);
}

void ADC_Stream::begin_run() {
    m_ring.discard();
    m_gate.open();
}

void ADC_Stream::end_run() {
    m_gate.close();
    m_ring.discard();
}

std::size_t ADC_Stream::take(Neuropixels::PacketInfo* infos, std::int16_t* rows, std::size_t row_length,
                             std::size_t most) {
    const Run_Number run = m_gate.run();
    return m_ring.take(most, [&](const Record& record, std::size_t taken) {
        if (record.run != run) {
            return Verdict::skipped;
        }
        if (infos != nullptr) {
            const std::uint16_t status = record.sync ? ELECTRODEPACKET_STATUS_SYNC : 0;
            infos[taken] = {record.stamp, status, static_cast<std::uint16_t>(row_length)};
        }
        for (std::size_t column = 0; rows != nullptr && column < row_length; ++column) {
            rows[taken * row_length + column] = element(column, record.samples, record.comparators);
        }
        return Verdict::taken;
    });
}

} // namespace Pelgar::ORBE::npoe_adapter
