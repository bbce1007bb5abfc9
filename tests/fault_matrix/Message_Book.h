// Test support, fault matrix. What the library says of a fault: the errors and warnings of its log, and what
// it prints that a host without a fault does not see. One thread.
#pragma once

#include "Log_Capture.h"
#include "Phase.h"

#include <map>
#include <set>
#include <string>
#include <vector>

namespace Pelgar::ORBE::test {

class Message_Book {
public:
    // Lines of a visit without a fault.
    void learn(Phase phase, const std::vector<std::string>& printed);

    // The distinct messages, log first; lines that differ in their numbers alone are one.
    std::vector<std::string> messages(Phase phase, const std::vector<Log_Line>& logged,
                                      const std::vector<std::string>& printed) const;

private:
    std::map<Phase, std::set<std::string>> m_ordinary;
};

} // namespace Pelgar::ORBE::test
