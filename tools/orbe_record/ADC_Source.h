// Program orbe-record. The packets of the ADC inputs, from the library and to a writer. The stream's threads.
#pragma once

#include "formats/A_Recording_Writer.h"

#include <NeuropixAPI.h>

#include <cstddef>
#include <cstdint>
#include <string>

namespace Pelgar::ORBE::recorder {

class ADC_Source {
public:
    static constexpr std::size_t batch_packets = 1536;       // 51 ms
    static constexpr double bytes_a_sample = 12 * 2.0 + 2.0; // the inputs, and their comparators

    struct Batch {
        std::size_t count;
        Neuropixels::PacketInfo infos[batch_packets];
        std::int16_t rows[batch_packets * adc_row_length];
    };

    const std::string& name() const { return m_name; }

    // Adds what there is, up to a whole batch. Never waits.
    void read(Batch& batch) const;

    double fill() const;

    static std::uint64_t first_sample(const Batch& batch);
    static void write(A_Recording_Writer& writer, std::size_t index, const Batch& batch);

private:
    std::string m_name = "ADC";
};

} // namespace Pelgar::ORBE::recorder
