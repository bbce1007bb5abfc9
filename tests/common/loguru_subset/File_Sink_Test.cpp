#include "File_Sink.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <system_error>

namespace {

using loguru::detail::File_Sink;

std::string content_of(const char* path) {
    std::ostringstream content;
    content << std::ifstream(path, std::ios::binary).rdbuf();
    return content.str();
}

TEST(FileSink, LinesAreInTheFileAtOnceAndEndInOneByte) {
    File_Sink sink("a.log", "wb", 3);
    EXPECT_EQ(sink.id(), "a.log");
    EXPECT_EQ(sink.verbosity(), 3);
    sink.write({0, "file", 1, "p| ", "", "", "first"});
    EXPECT_EQ(content_of("a.log"), "p| first\n");
    sink.write({0, "file", 1, "p| ", ".   ", "", "second"});
    EXPECT_EQ(content_of("a.log"), "p| first\np| .   second\n");
}

TEST(FileSink, FileThatCannotBeOpenedIsAnError) {
    std::filesystem::create_directory("folder");
    for (const char* path : {"no/such/folder.log", "folder", ""}) {
        EXPECT_THROW(File_Sink(path, "wb", 0), std::system_error) << path;
    }
    try {
        const File_Sink sink("no/such/folder.log", "wb", 0);
    } catch (const std::system_error& error) {
        EXPECT_EQ(error.code().value(), ENOENT);
    }
}

} // namespace
