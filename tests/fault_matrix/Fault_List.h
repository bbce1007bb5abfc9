// Test support, fault matrix. Every fault of the matrix, in the order of the table.
#pragma once

#include "Matrix_Fault.h"

#include <vector>

namespace Pelgar::ORBE::test {

std::vector<Matrix_Fault> all_faults();

} // namespace Pelgar::ORBE::test
