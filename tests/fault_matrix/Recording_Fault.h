// Test support, fault matrix. One thing that can go wrong with a recording that is played. A plain record.
#pragma once

#include "Phase.h"
#include "Recording_Visit.h"

#include <functional>
#include <string>
#include <vector>

namespace Pelgar::ORBE::test {

struct Recording_Fault {
    std::string name;
    std::vector<Phase> phases; // in which it can show
    bool in_host_mode = true;  // whether it can be made for host mode

    // What the recording is from the visit's beginning.
    std::function<void(Recording_Visit&, Phase)> prepare = [](Recording_Visit&, Phase) {};
    // In the moment before the phase; when streaming, the pump has the first piece and is held.
    std::function<void(Recording_Visit&)> strike = [](Recording_Visit&) {};
    std::function<void(Recording_Visit&)> heal = [](Recording_Visit&) { Recording_Visit::write_recording(); };
};

std::vector<Recording_Fault> all_recording_faults();

} // namespace Pelgar::ORBE::test
