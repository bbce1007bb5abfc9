#include "A_Way.h"

#include <NeuropixAPI.h>

namespace Pelgar::ORBE::test {

std::vector<Host_Call_To_Make> A_Way::common_calls(Phase phase) {
    using namespace Neuropixels;
    switch (phase) {
    case Phase::open:
        return {{"openBS", [] { return openBS(slot); }}};
    case Phase::bring_up:
        return {{"openPort", [] { return openPort(slot, port); }},
                {"openProbe", [] { return openProbe(slot, port, dock); }},
                {"init", [] { return init(slot, port, dock); }}};
    case Phase::configure:
        return {{"setGain", [] { return setGain(slot, port, dock, 7, 3, 2); }},
                {"selectElectrode", [] { return selectElectrode(slot, port, dock, 5, 0, 1); }},
                {"setADCCalibration", [] { return setADCCalibration(slot, port, adc_calibration); }},
                {"setGainCalibration", [] { return setGainCalibration(slot, port, dock, gain_calibration); }},
                {"writeProbeConfiguration", [] { return writeProbeConfiguration(slot, port, dock, true); }}};
    case Phase::close:
        return {{"closeBS", [] { return closeBS(slot); }}};
    default:
        return {};
    }
}

} // namespace Pelgar::ORBE::test
