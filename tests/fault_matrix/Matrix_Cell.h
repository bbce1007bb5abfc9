// Test support, fault matrix. What was seen of one fault in one phase. A plain record.
#pragma once

#include "Phase.h"

#include <map>
#include <string>
#include <vector>

namespace Pelgar::ORBE::test {

struct Matrix_Cell {
    std::string result;
    std::vector<std::string> messages;
    std::string recovery;

    bool operator==(const Matrix_Cell&) const = default;
};

// The phases in which the fault can show.
using Matrix_Row = std::map<Phase, Matrix_Cell>;

} // namespace Pelgar::ORBE::test
