#include "Port_Reader.h"

#include "Packet_Difference.h"
#include "Port_Expectation.h"

#include <NeuropixAPI.h>

#include <exception>
#include <utility>
#include <vector>

namespace Pelgar::ORBE::recording {

namespace {

constexpr int slot = 0;
constexpr int dock = 0;
// Packets asked for at once. The library keeps 501; a block of super frames makes 149 or 150.
constexpr std::size_t batch_packets = 16;

} // namespace

Port_Reader::Port_Reader(std::filesystem::path recording, int port, bool verify)
    : m_recording(std::move(recording)), m_port(port), m_verify(verify) {}

void Port_Reader::run() {
    try {
        read_all();
    } catch (const std::exception& error) {
        m_result.error = error.what();
    }
    m_result.ended = true;
}

void Port_Reader::read_all() {
    Port_Expectation expectation(Piece_Reader(m_recording), static_cast<unsigned>(m_port));
    std::vector<Neuropixels::electrodePacket> expected(batch_packets);
    std::vector<Neuropixels::electrodePacket> received(batch_packets);
    while (true) {
        // What must come is worked out before it is asked for, and as many packets are asked for.
        std::size_t known = 0;
        while (known < batch_packets) {
            const Neuropixels::electrodePacket* const packet = expectation.next();
            if (packet == nullptr) {
                break;
            }
            expected[known++] = *packet;
        }
        m_result.expected += known;
        m_result.bytes = expectation.bytes_read();
        // After the last packet one more is asked for, which must not come.
        const bool last = known == 0;
        m_result.complete = last;
        m_result.ended = last;

        int count = 0;
        Neuropixels::readElectrodeData(slot, m_port, dock, received.data(), &count,
                                       last ? 1 : static_cast<int>(known));
        if (last) {
            m_result.surplus = count != 0;
            return;
        }
        for (std::size_t i = 0; m_verify && i < static_cast<std::size_t>(count); ++i) {
            const std::string difference = difference_of(received[i], expected[i]);
            if (difference.empty()) {
                ++m_result.equal;
            } else if (m_result.first_difference.empty()) {
                m_result.first_difference =
                    "packet " + std::to_string(m_result.received + i) + ": " + difference;
            }
        }
        m_result.received += static_cast<std::uint64_t>(count);
        if (static_cast<std::size_t>(count) < known) {
            return;
        }
    }
}

} // namespace Pelgar::ORBE::recording
