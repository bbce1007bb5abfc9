#include "back_ends/File_Descriptor.h"

#include "Temp_Directory.h"

#include <fcntl.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <fstream>
#include <string>
#include <utility>

namespace {

using Pelgar::ORBE::File_Descriptor;
using Pelgar::ORBE::test::Temp_Directory;

class FileDescriptor : public testing::Test {
protected:
    FileDescriptor() { std::ofstream(m_path) << "x"; }

    static bool is_valid(int descriptor) { return ::fcntl(descriptor, F_GETFD) != -1; }

    Temp_Directory m_directory;
    std::string m_path = (m_directory.path() / "file").string();
};

TEST_F(FileDescriptor, IsClosedAtFirst) {
    const File_Descriptor descriptor;
    EXPECT_FALSE(descriptor.is_open());
}

TEST_F(FileDescriptor, OpensAndCloses) {
    File_Descriptor descriptor(m_path);
    ASSERT_TRUE(descriptor.is_open());
    const int number = descriptor.get();
    EXPECT_TRUE(is_valid(number));
    descriptor.close();
    EXPECT_FALSE(descriptor.is_open());
    EXPECT_FALSE(is_valid(number));
    descriptor.close();
    EXPECT_FALSE(descriptor.is_open());
}

TEST_F(FileDescriptor, FailedOpenLeavesTheReasonInErrno) {
    errno = 0;
    const File_Descriptor descriptor((m_directory.path() / "missing").string());
    EXPECT_EQ(errno, ENOENT);
    EXPECT_FALSE(descriptor.is_open());
}

TEST_F(FileDescriptor, AssignmentClosesWhatWasHeld) {
    File_Descriptor descriptor(m_path);
    const int first = descriptor.get();
    File_Descriptor other(m_path);
    const int second = other.get();
    descriptor = std::move(other);
    EXPECT_EQ(descriptor.get(), second);
    EXPECT_TRUE(is_valid(second));
    EXPECT_FALSE(is_valid(first));
}

TEST_F(FileDescriptor, ClosesAtTheEndOfItsLife) {
    int number = -1;
    {
        const File_Descriptor descriptor(m_path);
        number = descriptor.get();
        ASSERT_TRUE(is_valid(number));
    }
    EXPECT_FALSE(is_valid(number));
}

} // namespace
