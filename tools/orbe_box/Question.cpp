#include "Question.h"

#include <cstdio>

namespace Pelgar::ORBE::tools {

bool user_agrees(const std::string& question, std::istream& answers) {
    std::printf("%s [yes/no] ", question.c_str());
    std::fflush(stdout);
    std::string answer;
    std::getline(answers, answer);
    if (!answer.empty() && answer.back() == '\r') {
        answer.pop_back();
    }
    return answer == "yes";
}

} // namespace Pelgar::ORBE::tools
