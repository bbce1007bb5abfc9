// Test support, fault matrix. Takes what the process prints to standard output and standard error into a file
// while it lives. Made once, before any thread; read on one thread.
#pragma once

#include <string>
#include <vector>

namespace Pelgar::ORBE::test {

class Console_File {
public:
    Console_File();
    ~Console_File();
    Console_File(const Console_File&) = delete;
    Console_File& operator=(const Console_File&) = delete;

    // The lines since the last call.
    std::vector<std::string> take_lines();

    // To where standard error led before.
    void say(const std::string& text) const;

private:
    int m_output;
    int m_error;
    int m_file;
};

} // namespace Pelgar::ORBE::test
