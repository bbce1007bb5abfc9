// Tools, recorder. Moments of UTC as text. Any thread; nothing blocks.
#pragma once

#include "description/Recording_Description.h"

#include <optional>
#include <string>

namespace Pelgar::ORBE::recorder {

// "2024-05-31T12:34:56.789Z".
std::string time_text(Start_Time time);

// Nothing for a text of any other form, or a day that no calendar has.
std::optional<Start_Time> time_from_text(const std::string& text);

} // namespace Pelgar::ORBE::recorder
