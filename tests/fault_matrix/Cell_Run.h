// Test support, fault matrix. Makes a cell: has the fault strike in a visit, looks at what the host sees,
// and tries what brings everything back, from nothing at all up to a new opening, each in a visit of its
// own. One thread.
#pragma once

#include "Console_File.h"
#include "Matrix_Cell.h"
#include "Matrix_Fault.h"
#include "Message_Book.h"
#include "Phase_Use.h"
#include "Visit.h"

#include <optional>

namespace Pelgar::ORBE::test {

class Cell_Run {
public:
    // Goes through visits without a fault, to know what they use and say. Throws std::runtime_error when
    // they are not right.
    Cell_Run(const A_Way& way, Console_File& console);

    // The cells of all phases in which the fault can show.
    Matrix_Row run(const Matrix_Fault& fault);

private:
    enum class Rung : std::uint8_t { nothing, again, restart, reopen };

    struct Attempt {
        Matrix_Cell cell; // without the recovery
        bool has_recovered = false;
        bool left_call_waiting = false;
    };

    void learn_healthy_visit();
    Matrix_Cell cell(const Matrix_Fault& fault, Phase phase);
    Attempt attempt(const Matrix_Fault& fault, Phase phase, Rung rung);
    Matrix_Cell observe(Visit& visit, Bench& bench, Phase phase);
    bool climb(Visit& visit, Phase phase, Rung rung);
    bool finish(Visit& visit, Bench& bench, Phase phase);
    std::string recovery_by(Phase phase, Rung rung, bool call_waited) const;
    static bool makes_sense(Phase phase, Rung rung);
    static bool carry_out(Visit& visit, Phase first, Phase last);
    void must_carry_out(Visit& visit, Phase first, Phase last) const;

    const A_Way& m_way;
    Console_File& m_console;
    Message_Book m_book;
    Visit_Use m_use;
    std::vector<std::uint8_t> m_probe_state;
};

} // namespace Pelgar::ORBE::test
