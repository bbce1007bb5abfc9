// Program orbe-record. The packets of a probe port, from the library and to a writer. The stream's threads.
#pragma once

#include "formats/A_Recording_Writer.h"

#include <NeuropixAPI.h>

#include <cstddef>
#include <cstdint>
#include <string>

namespace Pelgar::ORBE::recorder {

class Probe_Source {
public:
    static constexpr std::size_t batch_packets = 128; // 51 ms
    // AP, and a twelfth of LFP.
    static constexpr double bytes_a_sample = 384 * 2 * 13.0 / 12;

    struct Batch {
        std::size_t count;
        Neuropixels::electrodePacket packets[batch_packets];
    };

    explicit Probe_Source(int port) : m_port(port), m_name("probe " + std::to_string(port)) {}

    const std::string& name() const { return m_name; }

    // Adds what there is, up to a whole batch. Never waits.
    void read(Batch& batch) const;

    double fill() const;

    static std::uint64_t first_sample(const Batch& batch);
    static void write(A_Recording_Writer& writer, std::size_t index, const Batch& batch);

private:
    int m_port;
    std::string m_name;
};

} // namespace Pelgar::ORBE::recorder
