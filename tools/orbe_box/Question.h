// Program orbe-box. Asks the user before something is done that cannot be undone.
#pragma once

#include <istream>
#include <string>

namespace Pelgar::ORBE::tools {

// Shows `question` and reads a line. Only "yes" is consent.
bool user_agrees(const std::string& question, std::istream& answers);

} // namespace Pelgar::ORBE::tools
