#include "Stream_Reader.h"

#include "Bench.h"

#include <NeuropixAPI.h>
#include <adapter/Adapter_State.h>

#include <algorithm>
#include <cstddef>
#include <map>

namespace Pelgar::ORBE::test {

namespace {

constexpr int port_count = 4;
constexpr std::uint64_t whole_packets = 100;
constexpr std::uint64_t whole_adc_packets = 200;
constexpr int adc_row_length = 12;

std::string counted(std::uint64_t number, const char* what) {
    return std::to_string(number) + " " + what;
}

} // namespace

Stream_Reader::Stream_Reader(const A_Way& way) : m_way(way), m_adc(Bench::seed) {
    follow_from_here();
}

void Stream_Reader::follow_from_here() {
    m_ports.clear();
    for (int port = 1; port <= port_count; ++port) {
        m_ports.emplace_back(port, m_way.sample_offset());
    }
    m_adc = ADC_Follower(Bench::seed);
}

void Stream_Reader::drain() {
    static std::vector<Neuropixels::electrodePacket> packets(512);
    for (int port = 1; port <= port_count; ++port) {
        int available = 0;
        int room = 0;
        Neuropixels::getElectrodeDataFifoState(A_Way::slot, port, A_Way::dock, &available, &room);
        int count = 0;
        const int wanted = std::min<int>(available, static_cast<int>(packets.size()));
        if (wanted > 0) {
            Neuropixels::readElectrodeData(A_Way::slot, port, A_Way::dock, packets.data(), &count, wanted);
        }
        for (int i = 0; i < count; ++i) {
            m_ports[static_cast<std::size_t>(port) - 1].take(packets[static_cast<std::size_t>(i)]);
        }
    }
    if (m_way.has_adc()) {
        drain_adc();
    }
}

void Stream_Reader::drain_adc() {
    const auto converter = npoe_adapter::current_rhd_converter();
    const int available = converter ? static_cast<int>(converter->queue().size()) : 0;
    if (available == 0) {
        return;
    }
    std::vector<Neuropixels::PacketInfo> infos(static_cast<std::size_t>(available));
    std::vector<std::int16_t> rows(infos.size() * adc_row_length);
    int count = 0;
    Neuropixels::ADC_readPackets(A_Way::slot, infos.data(), rows.data(), adc_row_length, available, &count);
    for (int i = 0; i < count; ++i) {
        m_adc.take(rows.data() + static_cast<std::ptrdiff_t>(i) * adc_row_length);
    }
}

Stream_Reader::Losses Stream_Reader::losses() const {
    Losses losses;
    for (std::size_t port = 0; port < m_ports.size(); ++port) {
        losses.samples[port] = m_ports[port].lost_samples();
        losses.wrong[port] = m_ports[port].wrong_samples();
        losses.packets[port] = m_ports[port].packets();
    }
    losses.adc = m_adc.lost_packets();
    losses.wrong_adc = m_adc.wrong_packets();
    return losses;
}

std::string Stream_Reader::text_of(const Losses& before) const {
    const Losses now = losses();
    std::map<std::string, std::vector<std::string>> ports_by_text;
    for (std::size_t port = 0; port < m_ports.size(); ++port) {
        std::string text;
        if (now.packets[port] == before.packets[port]) {
            text = "nothing comes";
        } else {
            if (const auto lost = now.samples[port] - before.samples[port]; lost > 0) {
                text = counted(lost, "samples lost");
            }
            if (const auto wrong = now.wrong[port] - before.wrong[port]; wrong > 0) {
                text += (text.empty() ? "" : ", ") + counted(wrong, "wrong");
            }
        }
        if (!text.empty()) {
            ports_by_text[text].push_back(std::to_string(port + 1));
        }
    }
    std::string whole;
    for (const auto& [text, ports] : ports_by_text) {
        std::string names;
        for (const std::string& port : ports) {
            names += (names.empty() ? "" : ", ") + port;
        }
        const std::string who = ports.size() == 1                ? "port " + names
                                : ports.size() == m_ports.size() ? "each port"
                                                                 : "ports " + names;
        whole += (whole.empty() ? "" : "; ") + who + ": " + text;
    }
    if (const auto lost = now.adc - before.adc; lost > 0) {
        whole += (whole.empty() ? "" : "; ") + ("ADC: " + counted(lost, "packets lost"));
    }
    if (const auto wrong = now.wrong_adc - before.wrong_adc; wrong > 0) {
        whole += (whole.empty() ? "" : "; ") + ("ADC: " + counted(wrong, "packets wrong"));
    }
    return whole.empty() ? "nothing lost" : whole;
}

bool Stream_Reader::is_whole() const {
    return std::all_of(m_ports.begin(), m_ports.end(),
                       [](const Ramp_Follower& port) { return port.streak() >= whole_packets; }) &&
           (!m_way.has_adc() || m_adc.streak() >= whole_adc_packets);
}

} // namespace Pelgar::ORBE::test
