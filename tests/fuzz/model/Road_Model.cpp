#include "Road_Model.h"

#include <functional>
#include <string>
#include <utility>

namespace Pelgar::ORBE::road_model {

Road_Model::Road_Model(const Road_Settings& settings, Process_Counters& process, std::uint32_t streaming)
    : m_settings(settings), m_process(process), m_sync(settings.sync), m_own_adc(process, m_told),
      m_host_adc(m_sync, settings.adc_row_length),
      m_rhd(settings.rhd_streams, m_told,
            settings.adc_listening ? std::function<void(const RHD_Frame_Words&)>(
                                         [this](const auto& frame) { take_rhd_frame(frame); })
                                   : nullptr),
      m_rows(m_settings, process, m_told, m_rhd) {
    for (const Listening listening : settings.ports) {
        m_own_probes.emplace_back(listening, process, m_told);
        m_host_probes.emplace_back(listening, m_told);
    }
    set_gains(settings.gain_seed);
    if (settings.host_mode) {
        begin_streaming(streaming);
        begin_run();
        return;
    }
    for (unsigned port = 0; port < port_count; ++port) {
        m_told.out += "L2_CH_Results_NP_PXI_Format_Converter ctor\nsizeof(m_ep)) : 10056\n";
    }
    m_told.out += "MT_RHD_PXI_Queue ctor \nRHD_to_PXI_ADC_Format_Converter ctor\n";
}

void Road_Model::push(const Bytes& transfer) {
    if (!m_rule.admits(m_queue.size(), m_settings.most_transfers)) {
        if (!m_loss) {
            m_loss = Loss{};
        }
        m_lost_bytes += transfer.size();
        for (std::size_t row = 0; row + 16 <= transfer.size() && transfer[row] / 16 == 0xD; row += 16) {
            const unsigned id = transfer[row] % 16;
            if (id < port_count && transfer[row + 3] / 8 % 2 == 1) {
                ++(*m_loss)[id];
            }
        }
        return;
    }
    if (m_loss) {
        m_queue.push_back({{}, std::exchange(m_loss, std::nullopt)});
    }
    m_queue.push_back({transfer, std::nullopt});
    if (m_queue.size() > m_process.main_queue_mark) {
        m_process.main_queue_mark = m_queue.size();
        m_told.out += "main_demux_queue_high_water_mark : " + std::to_string(m_queue.size()) + "\n";
    }
}

void Road_Model::work_on_transfers() {
    for (; !m_queue.empty(); m_queue.pop_front()) {
        const Queued& front = m_queue.front();
        if (front.loss) {
            m_rows.take_loss(*front.loss);
            continue;
        }
        if (!std::exchange(m_has_begun, true)) {
            m_told.out += "Elements in main demux queue: " + std::to_string(m_queue.size()) +
                          ", packet size : " + std::to_string(front.transfer.size()) + "\n";
        }
        if (front.transfer.size() >= 16) {
            m_rows.take_transfer(front.transfer);
        }
    }
}

void Road_Model::work_on_port(unsigned port) {
    for (const Block& block : m_rows.blocks[port]) {
        if (m_settings.host_mode) {
            m_host_probes[port].take_block(block.bytes, block.lost_before);
        } else {
            m_own_probes[port].take_block(block.bytes);
        }
    }
    m_rows.blocks[port].clear();
}

void Road_Model::work_on_rhd() {
    m_rhd.read();
}

void Road_Model::take_rhd_frame(const RHD_Frame_Words& frame) {
    if (m_settings.host_mode) {
        m_host_adc.take(frame);
    } else {
        m_own_adc.take(frame);
    }
}

void Road_Model::resync() {
    for (Own_Probe& probe : m_own_probes) {
        probe.resync();
    }
}

void Road_Model::forget() {
    m_rows.forget();
    m_rhd.forget();
}

void Road_Model::set_gains(unsigned seed) {
    if (!m_settings.gain_loaded) {
        return;
    }
    for (unsigned port = 0; port < port_count; ++port) {
        m_own_probes[port].gain.load(seed);
        m_host_probes[port].gain.load(seed);
    }
}

void Road_Model::begin_streaming(std::uint32_t streaming) {
    for (Host_Probe& probe : m_host_probes) {
        probe.packets.begin_streaming(streaming);
    }
    m_host_adc.begin_streaming(streaming);
}

void Road_Model::begin_run() {
    for (Host_Probe& probe : m_host_probes) {
        probe.packets.begin_run();
    }
    m_host_adc.begin_run();
}

void Road_Model::end_run() {
    for (Host_Probe& probe : m_host_probes) {
        probe.packets.end_run();
    }
    m_host_adc.end_run();
}

std::deque<Probe_Packet> Road_Model::take_packets(unsigned port) {
    if (m_settings.host_mode) {
        return m_host_probes[port].packets.take(m_sync);
    }
    return std::exchange(m_own_probes[port].packets.queue, {});
}

std::deque<ADC_Packet> Road_Model::take_adc_packets() {
    return std::exchange(m_settings.host_mode ? m_host_adc.queue : m_own_adc.queue, {});
}

Damage Road_Model::damage(unsigned stream) const {
    Damage damage;
    if (stream < port_count) {
        damage = m_settings.host_mode ? m_host_probes[stream].damage : m_own_probes[stream].damage;
    }
    damage.row_gaps = m_rows.row_gaps[stream];
    return damage;
}

} // namespace Pelgar::ORBE::road_model
