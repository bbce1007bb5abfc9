// Test support, fault matrix. Writes the matrix as a page of Markdown. One thread.
#pragma once

#include "Matrix_Cell.h"
#include "Matrix_Fault.h"
#include "Recording_Fault.h"

#include <string>
#include <vector>

namespace Pelgar::ORBE::test {

struct Matrix_Line {
    Matrix_Fault fault;
    Matrix_Row own;       // by the box's own calls
    Matrix_Row host_mode; // as an acquisition program
};

struct Recording_Line {
    Recording_Fault fault;
    Matrix_Row own;
    Matrix_Row host_mode; // none when the fault cannot be made there
};

std::string matrix_page(const std::vector<Matrix_Line>& lines, const std::vector<Recording_Line>& recordings);

} // namespace Pelgar::ORBE::test
