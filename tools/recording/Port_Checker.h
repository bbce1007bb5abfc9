// Tools, recording library. Looks at the rows of one port: super frames, tags, frame counters, and how many
// packets come out of them.
#pragma once

#include "Check_Report.h"
#include "Port_Model.h"
#include "Row_Counter_Check.h"

namespace Pelgar::ORBE::recording {

class Port_Checker {
public:
    // `port` is the API's number, 1..4.
    explicit Port_Checker(unsigned port) : m_model(port) {}

    // Each row of the port, in order.
    void look_at(Row_View row);

    // Each whole piece of the stream, in order.
    void play(std::span<const std::uint8_t> piece);

    const Port_Findings& findings() const { return m_findings; }

private:
    bool find_place(Row_View row, bool continuous);
    void check_tags(Row_View row);
    void check_frame_counter(Row_View row);

    Port_Findings m_findings;
    Row_Counter_Check m_counter;
    Port_Model m_model;
    bool m_in_step = false; // the last row was part of a super frame
    std::size_t m_row = 0;  // the next row's place in its super frame
    bool m_any_frame = false;
    std::uint32_t m_counter_high = 0;
    std::uint32_t m_next_frame = 0;
};

} // namespace Pelgar::ORBE::recording
