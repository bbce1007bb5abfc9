// Test support, host mode. What an acquisition program sees of the ADC inputs: stamps in order, rows written
// whole, comparators that are 0 or 1. One thread a run.
#pragma once

#include "Port_Check.h"

#include <NeuropixAPI.h>

#include <cstdint>
#include <string>
#include <vector>

namespace Pelgar::ORBE::test {

class ADC_Check {
public:
    // What a row is filled with before it is asked for. The inputs' generator never makes it.
    static constexpr std::int16_t unwritten = 0x7ABC;

    void take(const Neuropixels::PacketInfo& info, const std::int16_t* row, int row_length) {
        const std::uint64_t sample = sample_of(info.Timestamp);
        if (m_packets != 0 && sample != m_last_sample + 1) {
            note("stamp " + std::to_string(info.Timestamp) + " behind sample " +
                 std::to_string(m_last_sample));
        }
        m_last_sample = sample;
        if ((info.Status & ~unsigned{ELECTRODEPACKET_STATUS_SYNC}) != 0) {
            note("status " + std::to_string(info.Status));
        }
        for (int column = 8; column < row_length; ++column) {
            if (row[column] == unwritten) {
                note("column " + std::to_string(column) + " is not written");
            } else if (column >= 12 && row[column] != 0 && row[column] != 1) {
                note("comparator " + std::to_string(column - 12) + " is " + std::to_string(row[column]));
            }
        }
        ++m_packets;
    }

    std::uint64_t packets() const { return m_packets; }

    std::uint64_t last_sample() const { return m_last_sample; }

    const std::vector<std::string>& faults() const { return m_faults; }

private:
    void note(const std::string& fault) {
        if (m_faults.size() < 5) {
            m_faults.push_back("ADC packet " + std::to_string(m_packets) + " : " + fault);
        }
    }

    std::uint64_t m_packets = 0;
    std::uint64_t m_last_sample = 0;
    std::vector<std::string> m_faults;
};

} // namespace Pelgar::ORBE::test
