// Program orbe-play. Says in words where two packets differ first. No state; any thread.
#pragma once

#include "expectation/ADC_Model.h"

#include <NeuropixAPI.h>

#include <span>
#include <string>

namespace Pelgar::ORBE::recording {

// Empty when the packets are equal in every time stamp, status word and sample.
std::string difference_of(const Neuropixels::electrodePacket& received,
                          const Neuropixels::electrodePacket& expected);

// The same for an ADC packet; `samples` are its twelve values.
std::string difference_of(const Neuropixels::PacketInfo& info, std::span<const std::int16_t> samples,
                          const ADC_Packet& expected);

} // namespace Pelgar::ORBE::recording
