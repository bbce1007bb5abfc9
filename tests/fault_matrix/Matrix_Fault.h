// Test support, fault matrix. One thing that can go wrong. A plain record.
#pragma once

#include "Bench.h"
#include "Phase_Use.h"

#include <functional>
#include <string>
#include <vector>

namespace Pelgar::ORBE::test {

struct Matrix_Fault {
    std::string group;
    std::string name;
    Part part = Part::link;

    // In the moment before the phase, of which is known what a healthy one uses, and when it is over.
    std::function<void(Bench&, Phase, const Phase_Use&)> strike = [](Bench&, Phase, const Phase_Use&) {};
    std::function<void(Bench&)> heal = [](Bench&) {};

    // Damage that the box does to its own rows, for this phase.
    std::function<std::vector<recording::Fault>(Phase)> damage = [](Phase) {
        return std::vector<recording::Fault>{};
    };

    // What the working directory holds from the beginning.
    std::function<void()> prepare = [] {};
};

} // namespace Pelgar::ORBE::test
