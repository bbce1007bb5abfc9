// Test support, Windows. Turns a failed system call into an exception.
#pragma once

#include "back_ends/Windows_Api.h"

namespace Pelgar::ORBE::test {

// Throws std::system_error with this text and the code of the last error unless `succeeded`.
void require(bool succeeded, const char* text);

} // namespace Pelgar::ORBE::test
