// Tools, what all programs share. Asks the user before something is done that cannot be undone.
#pragma once

#include <istream>
#include <string>

namespace Pelgar::ORBE::tools {

// Shows `question` on standard error, where the user sees it whatever becomes of standard output, and reads a
// line. Only "yes" is consent.
bool user_agrees(const std::string& question, std::istream& answers);

} // namespace Pelgar::ORBE::tools
