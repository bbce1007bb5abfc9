// Tools, recording library. Follows the row counter of one stream. It may start anywhere.
#pragma once

#include "checker/Check_Report.h"
#include "stream_format/Row_View.h"

namespace Pelgar::ORBE::recording {

class Row_Counter_Check {
public:
    // Counts the row, the file's row `number`; true when it follows the one before, or is the first.
    bool follows(Row_View row, std::uint64_t number, Row_Findings& findings) {
        const bool first = findings.rows++ == 0;
        const bool continuous = first || row.counter() == m_next;
        m_next = static_cast<std::uint8_t>(row.counter() + 1);
        if (!continuous) {
            findings.counter_gaps.note(number);
        }
        return continuous;
    }

private:
    std::uint8_t m_next = 0;
};

} // namespace Pelgar::ORBE::recording
