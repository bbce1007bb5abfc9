// Test support, fault matrix. What came of a call, or of reading, and how a call is made. Any thread.
#pragma once

#include "A_Way.h"

#include <string>

namespace Pelgar::ORBE::test {

struct Call_Result {
    bool is_right = false; // every call answered 0, or every sample came and was right
    std::string text;      // for people
    std::string last_error;
};

Call_Result make_call(const Host_Call_To_Make& call);

} // namespace Pelgar::ORBE::test
