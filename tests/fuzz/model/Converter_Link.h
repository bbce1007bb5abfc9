// Road model: whether a port's values have somewhere to go, and what is told where they have not.
#pragma once

#include "Gain_Model.h"
#include "Road_Output.h"
#include "Road_Settings.h"

#include <string>

namespace Pelgar::ORBE::road_model {

inline bool reaches_converter(Listening listening, Band band, Told& told) {
    const std::string name = band == Band::ap ? "ap" : "lp";
    if (listening == Listening::nobody) {
        told.err += "publish_" + name + "_ch_data destination it not alive\n";
    } else if (listening == Listening::no_converter) {
        told.out += "C_L2_CH_Gain_Fix_Filter has no " + name + " listener\n";
    }
    return listening == Listening::everything;
}

} // namespace Pelgar::ORBE::road_model
