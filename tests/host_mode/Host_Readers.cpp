#include "Host_Readers.h"

#include <algorithm>
#include <chrono>
#include <limits>

namespace Pelgar::ORBE::test {

namespace {

using namespace Neuropixels;

constexpr auto sleep_between_reads = std::chrono::milliseconds(2);
constexpr int electrode_batch = 64;
constexpr int adc_batch = 288;
constexpr int unwritten_count = -77;

} // namespace

Host_Readers::Host_Readers(int port_slot, const std::vector<int>& ports, int adc_slot, int adc_row_length)
    : m_port_slot(port_slot), m_ports(ports), m_adc_slot(adc_slot), m_adc_row_length(adc_row_length) {
    for (const int port : m_ports) {
        m_checks.emplace_back(port);
        m_packets.emplace_back(0);
        m_read_faults.emplace_back();
    }
    m_read_faults.emplace_back();
    for (std::size_t i = 0; i < m_ports.size(); ++i) {
        m_threads.emplace_back(&Host_Readers::read_port, this, i);
    }
    if (adc_row_length > 0) {
        m_threads.emplace_back(&Host_Readers::read_adc, this);
    }
}

void Host_Readers::finish() {
    m_ending = true;
    for (std::thread& thread : m_threads) {
        thread.join();
    }
    m_threads.clear();
}

void Host_Readers::read_port(std::size_t index) {
    std::vector<electrodePacket> packets(electrode_batch);
    while (!m_ending) {
        int count = unwritten_count;
        const auto result =
            readElectrodeData(m_port_slot, m_ports[index], 1, packets.data(), &count, electrode_batch);
        int available = -1;
        int headroom = -1;
        const auto state = getElectrodeDataFifoState(m_port_slot, m_ports[index], 1, &available, &headroom);
        if (result != SUCCESS || count < 0 || count > electrode_batch) {
            m_read_faults[index] = "readElectrodeData answers " + std::to_string(result) + " with " +
                                   std::to_string(count) + " packets";
            return;
        }
        if (state != SUCCESS || available < 0 || headroom < 0 || available + headroom <= 0) {
            m_read_faults[index] = "getElectrodeDataFifoState says " + std::to_string(available) + " and " +
                                   std::to_string(headroom);
            return;
        }
        for (int i = 0; i < count; ++i) {
            m_checks[index].take(packets[static_cast<std::size_t>(i)]);
        }
        m_packets[index] += static_cast<std::uint64_t>(count);
        if (count < electrode_batch) {
            std::this_thread::sleep_for(sleep_between_reads);
        }
    }
}

void Host_Readers::read_adc() {
    const auto row = static_cast<std::size_t>(m_adc_row_length);
    std::vector<PacketInfo> infos(adc_batch);
    std::vector<std::int16_t> rows(adc_batch * row);
    while (!m_ending) {
        std::fill(rows.begin(), rows.end(), ADC_Check::unwritten);
        int count = unwritten_count;
        const auto result =
            ADC_readPackets(m_adc_slot, infos.data(), rows.data(), m_adc_row_length, adc_batch, &count);
        int available = -1;
        int headroom = -1;
        const auto state = ADC_getPacketFifoStatus(m_adc_slot, &available, &headroom);
        if (result != SUCCESS || count < 0 || count > adc_batch || state != SUCCESS || available < 0 ||
            headroom < 0 || available + headroom <= 0) {
            m_read_faults.back() = "ADC_readPackets answers " + std::to_string(result) + " with " +
                                   std::to_string(count) + " packets, ADC_getPacketFifoStatus " +
                                   std::to_string(state);
            return;
        }
        for (int i = 0; i < count; ++i) {
            m_adc.take(infos[static_cast<std::size_t>(i)], rows.data() + static_cast<std::size_t>(i) * row,
                       m_adc_row_length);
        }
        m_adc_packets += static_cast<std::uint64_t>(count);
        if (count < adc_batch) {
            std::this_thread::sleep_for(sleep_between_reads);
        }
    }
}

std::uint64_t Host_Readers::fewest_packets() const {
    std::uint64_t fewest = std::numeric_limits<std::uint64_t>::max();
    for (const auto& packets : m_packets) {
        fewest = std::min<std::uint64_t>(fewest, packets);
    }
    return m_packets.empty() ? 0 : fewest;
}

std::vector<std::string> Host_Readers::faults() const {
    std::vector<std::string> faults;
    for (const std::string& fault : m_read_faults) {
        if (!fault.empty()) {
            faults.push_back(fault);
        }
    }
    for (const Port_Check& check : m_checks) {
        faults.insert(faults.end(), check.faults().begin(), check.faults().end());
    }
    faults.insert(faults.end(), m_adc.faults().begin(), m_adc.faults().end());
    return faults;
}

} // namespace Pelgar::ORBE::test
