// Tools, recording library. Decides, row by row and frame by frame, which faults strike. Runs on the
// generator's thread; what strikes depends on nothing but the faults, the seed and what came before.
#pragma once

#include "faults/Fault.h"

#include <vector>

namespace Pelgar::ORBE::recording {

class Fault_Plan {
public:
    Fault_Plan(const std::vector<Fault>& faults, std::uint64_t seed);

    // Whether there is nothing to ask.
    bool empty() const { return m_faults.empty(); }

    // Whether a fault of this kind strikes the next thing of the stream that this kind can strike. To be
    // asked once for each such thing, in the order of the file.
    bool strikes(Fault_Kind kind, unsigned stream);

    // The next random number for the details of a fault.
    std::uint64_t random();

private:
    struct Planned {
        Fault fault;
        std::uint64_t seen = 0;
    };

    bool strikes(Planned& planned);

    std::vector<Planned> m_faults;
    std::uint64_t m_seed;
    std::uint64_t m_draws = 0;
};

} // namespace Pelgar::ORBE::recording
