#include "Host_Packets.h"

namespace Pelgar::ORBE::road_model {

namespace {

std::int16_t in_volts(std::uint16_t value) {
    return static_cast<std::int16_t>(static_cast<int>(value) - 512);
}

} // namespace

void Host_Packets::begin_run() {
    m_queue.clear();
    m_rows = 0;
    m_is_running = true;
    m_waits_for_lfp = true;
}

void Host_Packets::end_run() {
    m_queue.clear();
    m_is_running = false;
}

void Host_Packets::begin_sample(std::uint64_t super_frame) {
    if (m_next.streaming != m_wanted_streaming) {
        m_next.streaming = m_wanted_streaming;
        m_numbers.restart();
    }
    m_sample = m_numbers.next(static_cast<std::int64_t>(super_frame - m_super_frame));
    m_super_frame = super_frame;
}

void Host_Packets::take_ap(const Channels& values) {
    if (!m_is_running) {
        return;
    }
    if (m_waits_for_lfp && m_super_frame % 12 != 0) {
        return;
    }
    m_waits_for_lfp = false;
    for (std::size_t channel = 0; channel < channel_count; ++channel) {
        m_next.packet.ap[m_rows][channel] = in_volts(values[channel]);
    }
    m_next.packet.stamps[m_rows] = Sample_Numbers::stamp(m_sample);
    m_next.samples[m_rows] = m_sample;
    if (++m_rows == packet_rows) {
        m_rows = 0;
        if (m_queue.size() < host_queue_length) {
            m_queue.push_back(m_next);
        }
    }
}

void Host_Packets::take_lfp(const Channels& values) {
    for (std::size_t channel = 0; channel < channel_count; ++channel) {
        m_next.packet.lfp[channel] = in_volts(values[channel]);
    }
}

std::deque<Probe_Packet> Host_Packets::take(const Sync_Model& sync) {
    std::deque<Probe_Packet> packets;
    for (const Waiting& waiting : m_queue) {
        Probe_Packet& packet = packets.emplace_back(waiting.packet);
        for (std::size_t row = 0; row < packet_rows; ++row) {
            packet.status[row] = sync.level(waiting.streaming, waiting.samples[row]) ? 64 : 0;
        }
    }
    m_queue.clear();
    return packets;
}

} // namespace Pelgar::ORBE::road_model
