// Test support, fault matrix. Makes the cells of a fault of a recording: has it strike in a visit, looks at
// what the host sees, and tries what brings everything back, from nothing at all up to a new opening, each in
// a visit of its own. One thread.
#pragma once

#include "Console_File.h"
#include "Matrix_Cell.h"
#include "Message_Book.h"
#include "Recording_Fault.h"

#include <cstdint>

namespace Pelgar::ORBE::test {

class Recording_Cells {
public:
    // Goes through a visit without a fault, to know what comes and is said in it. Throws std::runtime_error
    // when it is not right.
    Recording_Cells(const A_Way& way, Console_File& console);

    Matrix_Row run(const Recording_Fault& fault);

private:
    enum class Rung : std::uint8_t { nothing, again, restart, reopen };

    void learn_healthy_visit();
    Matrix_Cell cell(const Recording_Fault& fault, Phase phase);
    bool attempt(const Recording_Fault& fault, Phase phase, Rung rung, Matrix_Cell& cell);
    void observe(Recording_Visit& visit, Phase phase, Matrix_Cell& cell);
    bool climb(Recording_Visit& visit, Phase phase, Rung rung);
    bool opens_and_plays(Recording_Visit& visit);
    bool starts_and_plays(Recording_Visit& visit);
    std::string recovery_by(Rung rung, bool call_waited) const;

    const A_Way& m_way;
    Console_File& m_console;
    Message_Book m_book;
    std::uint64_t m_packets = 0; // of each port in a whole recording
};

} // namespace Pelgar::ORBE::test
