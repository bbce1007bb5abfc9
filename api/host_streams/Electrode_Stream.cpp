#include "host_streams/Electrode_Stream.h"

#include "host_streams/Sample_Stamp.h"

#include <chrono>
#include <cstring>
#include <string>

namespace Pelgar::ORBE::npoe_adapter {

namespace {

// The converter's ten bits, whose middle is no voltage.
constexpr int middle = 512;
constexpr int ten_bits = 1023;

std::int64_t now_ns() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::nanoseconds>(now).count();
}

void make_signed(const std::uint16_t (&values)[demux::channel_count], std::int16_t* samples) {
    for (std::size_t channel = 0; channel < demux::channel_count; ++channel) {
        samples[channel] = static_cast<std::int16_t>((values[channel] & ten_bits) - middle);
    }
}

} // namespace

Electrode_Stream::Electrode_Stream(int number, const Sync_Source& sync_source, const Sync_Levels& sync_levels,
                                   std::chrono::nanoseconds patience, std::size_t queue_length)
    : m_sync_source(sync_source), m_sync_levels(sync_levels), m_patience(patience.count()),
      m_ring(queue_length), m_drops("Port " + std::to_string(number)) {}

void Electrode_Stream::begin_sample(const demux::Sample_Position& position) {
    const std::uint32_t streaming = m_streaming.load(std::memory_order_acquire);
    if (streaming != m_record.streaming) {
        m_record.streaming = streaming;
        m_count.restart();
    }
    m_sample = m_count.number_of(position.super_frame);
    m_begins_lfp_sample = position.begins_lfp_sample;
}

void Electrode_Stream::publish_ap_ch_data(std::uint16_t (&values)[demux::channel_count]) {
    const Run_Number run = m_gate.run();
    if (run != m_record.run) {
        m_rows = 0;
        if (run == no_run || m_begins_lfp_sample) {
            m_record.run = run;
        }
    }
    if (run == no_run || run != m_record.run) {
        return;
    }
    make_signed(values, m_record.packet.apData[m_rows]);
    m_record.packet.timestamp[m_rows] = stamp_of(m_sample);
    m_record.samples[m_rows] = m_sample;
    if (++m_rows == NP1_PROBE_SUPERFRAMESIZE) {
        finish_packet();
        m_rows = 0;
    }
}

void Electrode_Stream::publish_lp_ch_data(std::uint16_t (&values)[demux::channel_count]) {
    make_signed(values, m_record.packet.lfpData);
}

void Electrode_Stream::finish_packet() {
    m_record.made_at = now_ns();
    if (!m_ring.push([this](Record& record) { record = m_record; })) {
        m_drops.count();
    }
}

void Electrode_Stream::begin_run() {
    m_ring.discard();
    m_gate.open();
}

void Electrode_Stream::end_run() {
    m_gate.close();
    m_ring.discard();
}

std::size_t Electrode_Stream::take(Neuropixels::electrodePacket* packets, std::size_t most) {
    const Run_Number run = m_gate.run();
    return m_ring.take(most, [&](const Record& record, std::size_t taken) {
        if (record.run != run) {
            return Verdict::skipped;
        }
        if (!is_settled(record)) {
            return Verdict::left;
        }
        if (packets != nullptr) {
            packets[taken] = record.packet;
            set_sync(record, packets[taken]);
        }
        return Verdict::taken;
    });
}

// Without a stream that brings the sync input nothing is waited for in vain for long.
bool Electrode_Stream::is_settled(const Record& record) const {
    return !m_sync_source.uses_inputs() ||
           m_sync_levels.has(record.streaming, record.samples[NP1_PROBE_SUPERFRAMESIZE - 1]) ||
           now_ns() - record.made_at >= m_patience;
}

void Electrode_Stream::set_sync(const Record& record, Neuropixels::electrodePacket& packet) const {
    for (std::size_t row = 0; row < NP1_PROBE_SUPERFRAMESIZE; ++row) {
        const std::uint64_t sample = record.samples[row];
        const bool high = m_sync_source.clock_level(sample) ||
                          (m_sync_source.uses_inputs() && m_sync_levels.level(record.streaming, sample));
        packet.Status[row] = high ? ELECTRODEPACKET_STATUS_SYNC : 0;
    }
}

} // namespace Pelgar::ORBE::npoe_adapter
