#include "common/Host_Path.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace {

using Pelgar::ORBE::opens_as_directory;

// Whatever the platform: where a stream opens a directory it must be told in time, elsewhere it need not.
TEST(HostPath, ADirectoryIsToldOrNotOpened) {
    std::filesystem::create_directory("directory");
    EXPECT_TRUE(opens_as_directory("directory") || !std::ifstream("directory").is_open());
}

TEST(HostPath, FilesAndMissingNamesAreNoDirectories) {
    std::ofstream("file") << "text";
    EXPECT_FALSE(opens_as_directory("file"));
    EXPECT_FALSE(opens_as_directory("missing"));
    EXPECT_FALSE(opens_as_directory(""));
}

} // namespace
