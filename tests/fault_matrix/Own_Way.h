// Test support, fault matrix. A host that knows the box and uses its own calls. One thread.
#pragma once

#include "A_Way.h"

#include <NeuropixAPI.h>

namespace Pelgar::ORBE::test {

class Own_Way final : public A_Way {
public:
    void select() const override {}

    std::vector<Host_Call_To_Make> calls(Phase phase) const override {
        if (phase == Phase::start) {
            return {{"start_acquisition", [] { return Neuropixels::start_acquisition(slot, port); }}};
        }
        if (phase == Phase::stop) {
            return {{"stop_acquisition", [] { return Neuropixels::stop_acquisition(slot, port); }}};
        }
        return common_calls(phase);
    }

    bool has_adc() const override { return true; }

    int sample_offset() const override { return 0; }

    std::string restart_text() const override { return "`stop_acquisition`, `start_acquisition`"; }

    bool restarts_after_end() const override { return false; }
};

} // namespace Pelgar::ORBE::test
