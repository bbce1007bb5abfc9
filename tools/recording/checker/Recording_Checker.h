// Tools, recording library. Looks through a recording, piece by piece, and reports what it holds. Takes any
// bytes.
#pragma once

#include "checker/Check_Report.h"
#include "checker/Port_Checker.h"
#include "checker/RHD_Checker.h"
#include "expectation/Packet_Counts.h"

namespace Pelgar::ORBE::recording {

class Recording_Checker {
public:
    // The next whole piece of 1 MiB.
    void look_at_piece(std::span<const std::uint8_t> piece);

    // What is left at the end of the recording, less than a piece.
    void look_at_rest(std::span<const std::uint8_t> rest);

    Check_Report report() const;

private:
    void look_at_rows(std::span<const std::uint8_t> bytes);

    Check_Report m_report;
    std::array<Port_Checker, port_count> m_ports;
    RHD_Checker m_rhd;
    Packet_Counts m_packets;
    std::array<Row_Counter_Check, stream_count> m_unknown;
};

} // namespace Pelgar::ORBE::recording
