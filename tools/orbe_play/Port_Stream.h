// Program orbe-play. The packets of one port, for Stream_Reader.
#pragma once

#include "expectation/Port_Expectation.h"

#include <NeuropixAPI.h>

#include <array>
#include <string>

namespace Pelgar::ORBE::recording {

class Port_Stream {
public:
    // Packets asked for at once, and held back for the comparison: the ring takes about 20 MB.
    static constexpr std::size_t batch_packets = 16;
    static constexpr std::size_t batches = 128;

    struct Batch {
        std::array<Neuropixels::electrodePacket, batch_packets> packets;
        int count = 0;
    };

    // `port` is the API's number, 1..4.
    Port_Stream(const std::filesystem::path& recording, int port);

    int read(Batch& batch, int count) const;
    std::string difference(const Batch& batch, std::size_t index);

private:
    int m_port;
    Port_Expectation m_expectation;
};

} // namespace Pelgar::ORBE::recording
