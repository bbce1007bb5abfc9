#include "Port_Stream.h"

#include "Packet_Difference.h"

namespace Pelgar::ORBE::recording {

namespace {

constexpr int slot = 0;
constexpr int dock = 0;

} // namespace

Port_Stream::Port_Stream(const std::filesystem::path& recording, int port)
    : m_port(port), m_expectation(Piece_Reader(recording), static_cast<unsigned>(port)) {}

int Port_Stream::read(Batch& batch, int count) const {
    int received = 0;
    Neuropixels::readElectrodeData(slot, m_port, dock, batch.packets.data(), &received, count);
    return received;
}

std::string Port_Stream::difference(const Batch& batch, std::size_t index) {
    const Neuropixels::electrodePacket* const expected = m_expectation.next();
    return expected == nullptr ? "not in the recording" : difference_of(batch.packets[index], *expected);
}

} // namespace Pelgar::ORBE::recording
