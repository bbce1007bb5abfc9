#include "command_line/Question.h"

#include "terminal/Standard_Output.h"

#include <cstdio>

namespace Pelgar::ORBE::tools {

bool user_agrees(const std::string& question, std::istream& answers) {
    // What the question is about may still be on its way.
    flush_standard_output();
    std::fprintf(stderr, "%s [yes/no] ", question.c_str());
    std::string answer;
    std::getline(answers, answer);
    if (!answer.empty() && answer.back() == '\r') {
        answer.pop_back();
    }
    return answer == "yes";
}

} // namespace Pelgar::ORBE::tools
