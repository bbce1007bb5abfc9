#include "Program_Run.h"

#include <cstdlib>
#include <fstream>
#include <sstream>

#include <sys/wait.h>

namespace Pelgar::ORBE::test {

namespace {

std::string content(const char* path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

} // namespace

Program_Run run_program(const std::string& command) {
    const int status = std::system((command + " >run-output.txt 2>run-errors.txt").c_str());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, content("run-output.txt"),
            content("run-errors.txt")};
}

} // namespace Pelgar::ORBE::test
