#include "Judging_Host.h"

#include <chrono>

namespace Pelgar::ORBE::test {

namespace {

using namespace Neuropixels;

constexpr std::uint64_t ticks_per_packet = recording::slots_per_sample;

// In the box's own mode a call waits for all that it asks for; of the ADC inputs, of which a transfer fills
// the queue nearly, nothing may be waited for that is not there yet.
constexpr int own_port_batch = 8;
constexpr int own_adc_batch = 1;
constexpr int host_port_batch = 64;
constexpr int host_adc_batch = 288;
constexpr auto pause_without_packets = std::chrono::microseconds(200);

constexpr std::int16_t unwritten = 0x7ABC;

} // namespace

Judging_Host::Judging_Host(Packet_Layout layout, int slot, unsigned ports, const Endless_Options& sent,
                           Stream_Pace& pace)
    : m_layout(layout), m_slot(slot), m_pace(pace), m_adc(layout, sent.seed, sent.numbers) {
    for (unsigned port = 1; port <= ports; ++port) {
        m_ports.emplace_back(layout, sent.seed, port, sent.numbers);
    }
}

void Judging_Host::start() {
    m_ending = false;
    m_judging = true;
    if (m_was_started) {
        m_adc.restart();
        for (Port_Judge& judge : m_ports) {
            judge.restart();
        }
    }
    m_was_started = true;
    for (unsigned port = 1; port <= m_ports.size(); ++port) {
        m_threads.emplace_back(&Judging_Host::read_port, this, port);
    }
    m_threads.emplace_back(&Judging_Host::read_adc, this);
}

void Judging_Host::finish() {
    m_ending = true;
    for (std::thread& thread : m_threads) {
        thread.join();
    }
    m_threads.clear();
}

void Judging_Host::read_port(unsigned port) {
    const bool waits = m_layout == Packet_Layout::own;
    const int batch = waits ? own_port_batch : host_port_batch;
    Port_Judge& judge = m_ports[port - 1];
    std::vector<electrodePacket> packets(static_cast<std::size_t>(batch));
    while (!m_ending) {
        int count = -1;
        const auto result =
            readElectrodeData(m_slot, static_cast<int>(port), 1, packets.data(), &count, batch);
        if (result != SUCCESS || count < 0 || count > batch) {
            note("readElectrodeData answers " + std::to_string(result) + " with " + std::to_string(count) +
                 " packets");
            return;
        }
        for (int i = 0; i < count && m_judging; ++i) {
            note(judge.judge(packets[static_cast<std::size_t>(i)]));
        }
        m_port_packets += static_cast<std::uint64_t>(count);
        m_pace.received(port - 1, judge.packets() * ticks_per_packet);
        if (waits && count < batch) {
            return;
        }
        if (count == 0) {
            std::this_thread::sleep_for(pause_without_packets);
        }
    }
}

void Judging_Host::read_adc() {
    const bool waits = m_layout == Packet_Layout::own;
    const int batch = waits ? own_adc_batch : host_adc_batch;
    const int row_length = m_adc.row_length();
    const auto row = static_cast<std::size_t>(row_length);
    std::vector<PacketInfo> infos(static_cast<std::size_t>(batch));
    std::vector<std::int16_t> rows(infos.size() * row, unwritten);
    std::uint64_t received = 0;
    while (!m_ending) {
        int count = -1;
        const auto result = ADC_readPackets(m_slot, infos.data(), rows.data(), row_length, batch, &count);
        if (result != SUCCESS || count < 0 || count > batch) {
            note("ADC_readPackets answers " + std::to_string(result) + " with " + std::to_string(count) +
                 " packets");
            return;
        }
        for (std::size_t i = 0; i < static_cast<std::size_t>(count) && m_judging; ++i) {
            note(m_adc.judge(infos[i], std::span(rows).subspan(i * row, row)));
        }
        m_adc_packets += static_cast<std::uint64_t>(count);
        received += static_cast<std::uint64_t>(count);
        m_pace.received(Stream_Pace::adc_reader, received);
        if (waits && count < batch) {
            return;
        }
        if (count == 0) {
            std::this_thread::sleep_for(pause_without_packets);
        }
    }
}

void Judging_Host::note(const std::string& fault) {
    if (fault.empty()) {
        return;
    }
    const std::lock_guard lock(m_mutex);
    if (m_fault.empty()) {
        m_fault = fault;
    }
    m_judging = false;
}

std::string Judging_Host::fault() const {
    const std::lock_guard lock(m_mutex);
    return m_fault;
}

} // namespace Pelgar::ORBE::test
