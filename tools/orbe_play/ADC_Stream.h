// Program orbe-play. The ADC packets of the RHD headstage, for Stream_Reader.
#pragma once

#include "expectation/ADC_Expectation.h"

#include <NeuropixAPI.h>

#include <array>
#include <string>

namespace Pelgar::ORBE::recording {

class ADC_Stream {
public:
    // Packets asked for at once, and held back for the comparison: the ring takes about 2 MB.
    static constexpr std::size_t batch_packets = 128;
    static constexpr std::size_t batches = 512;
    static constexpr std::size_t channels = 12;

    struct Batch {
        std::array<Neuropixels::PacketInfo, batch_packets> infos;
        std::array<std::int16_t, batch_packets * channels> samples;
        int count = 0;
    };

    explicit ADC_Stream(const std::filesystem::path& recording);

    int read(Batch& batch, int count) const;
    std::string difference(const Batch& batch, std::size_t index);

private:
    ADC_Expectation m_expectation;
};

} // namespace Pelgar::ORBE::recording
