// Test support, fault matrix. How a host uses the box: which calls make a phase of its visit. One thread.
#pragma once

#include "Phase.h"

#include <functional>
#include <string>
#include <vector>

namespace Pelgar::ORBE::test {

struct Host_Call_To_Make {
    std::string name;
    std::function<int()> make; // answers the result
};

class A_Way {
public:
    A_Way() = default;
    virtual ~A_Way() = default;
    A_Way(const A_Way&) = delete;
    A_Way& operator=(const A_Way&) = delete;

    // Puts what chooses this way into the working directory.
    virtual void select() const = 0;

    // None for streaming, which takes reading.
    virtual std::vector<Host_Call_To_Make> calls(Phase phase) const = 0;

    // Whether the ADC inputs are read beside the probes.
    virtual bool has_adc() const = 0;

    // What is added to a sample to get the probe's ten bits.
    virtual int sample_offset() const = 0;

    // What ends a run and begins another one, and whether that works once the stream has ended by itself.
    virtual std::string restart_text() const = 0;
    virtual bool restarts_after_end() const = 0;

    static constexpr int slot = 2;
    static constexpr int port = 1;
    static constexpr int dock = 1;
    static constexpr const char* adc_calibration = "adc.csv";
    static constexpr const char* gain_calibration = "gain.csv";

protected:
    // Those calls that are the same in every way; none for the others.
    static std::vector<Host_Call_To_Make> common_calls(Phase phase);
};

} // namespace Pelgar::ORBE::test
