#include "Overwriting.h"

#include "command_line/Question.h"
#include "terminal/File_Descriptors.h"

#include <cstdio>
#include <iostream>
#include <stdexcept>
#include <system_error>

namespace Pelgar::ORBE::recording {

namespace {

constexpr int input_descriptor = 0;

} // namespace

bool may_write(const std::vector<std::filesystem::path>& files) {
    for (const std::filesystem::path& file : files) {
        std::error_code error;
        // What is no file cannot be overwritten; writing it says so.
        if (!std::filesystem::is_regular_file(file, error)) {
            continue;
        }
        const std::string name = "'" + file.string() + "'";
        if (!tools::descriptors::is_terminal(input_descriptor)) {
            throw std::runtime_error(name + " is there already (--force overwrites it)");
        }
        if (!tools::user_agrees("Overwrite " + name + "?", std::cin)) {
            std::puts("Nothing was written.");
            return false;
        }
    }
    return true;
}

} // namespace Pelgar::ORBE::recording
