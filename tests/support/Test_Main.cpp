// Runs the tests of one program inside a temporary working directory, because the library looks for its
// switch files, and writes its log and marker files, in the working directory. The log stays off standard
// error, so that tests can compare whole what the library prints there.
#include "Temp_Directory.h"

#include <gtest/gtest.h>
#include <loguru.hpp>

#include <filesystem>

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    loguru::g_stderr_verbosity = loguru::Verbosity_OFF;
    const auto home = std::filesystem::current_path();
    const Pelgar::ORBE::test::Temp_Directory directory;
    std::filesystem::current_path(directory.path());
    const int result = RUN_ALL_TESTS();
    std::filesystem::current_path(home);
    return result;
}
