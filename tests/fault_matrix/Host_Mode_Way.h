// Test support, fault matrix. An acquisition program that takes the box for a PXI basestation, in host mode.
// One thread.
#pragma once

#include "A_Way.h"

#include <NeuropixAPI.h>

#include <fstream>

namespace Pelgar::ORBE::test {

class Host_Mode_Way final : public A_Way {
public:
    void select() const override { std::ofstream("ORBE_HOST_MODE") << "pxi\n"; }

    std::vector<Host_Call_To_Make> calls(Phase phase) const override {
        if (phase == Phase::start) {
            return {{"setSWTrigger", [] { return Neuropixels::setSWTrigger(slot); }}};
        }
        if (phase == Phase::stop) {
            return {{"arm", [] { return Neuropixels::arm(slot); }}};
        }
        return common_calls(phase);
    }

    // A PXI basestation has none.
    bool has_adc() const override { return false; }

    int sample_offset() const override { return 512; }

    std::string restart_text() const override { return "`arm`, `setSWTrigger`"; }

    bool restarts_after_end() const override { return true; }
};

} // namespace Pelgar::ORBE::test
