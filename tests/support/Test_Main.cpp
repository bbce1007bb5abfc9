// Runs the tests of one program, each inside a temporary working directory of its own, because the library
// looks for its switch files, and writes its log and marker files, in the working directory. The log stays
// off standard error, so that tests can compare whole what the library prints there.
#include "Temp_Directory.h"

#include <gtest/gtest.h>
#include <loguru.hpp>

#include <filesystem>
#include <memory>

namespace {

// A program that is run whole leaves no test the files of another.
class Directory_Of_Each_Test : public testing::EmptyTestEventListener {
public:
    void OnTestStart(const testing::TestInfo& /*test*/) override {
        m_directory = std::make_unique<Pelgar::ORBE::test::Temp_Directory>();
        std::filesystem::current_path(m_directory->path());
    }

    void OnTestEnd(const testing::TestInfo& /*test*/) override {
        std::filesystem::current_path(m_home);
        m_directory.reset();
    }

private:
    std::filesystem::path m_home = std::filesystem::current_path();
    std::unique_ptr<Pelgar::ORBE::test::Temp_Directory> m_directory;
};

} // namespace

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    loguru::g_stderr_verbosity = loguru::Verbosity_OFF;
    // Owned by the framework, which deletes it at its end.
    testing::UnitTest::GetInstance()->listeners().Append(
        std::make_unique<Directory_Of_Each_Test>().release());
    return RUN_ALL_TESTS();
}
