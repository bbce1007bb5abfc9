// Test support: collects every log line that is written while the object lives, from all threads.
#pragma once

#include <mutex>
#include <string>
#include <vector>

namespace Pelgar::ORBE::test {

struct Log_Line {
    int verbosity; // -2 error, -1 warning, 0 info, 1..9 more detail
    std::string file;
    std::string text; // a scope reads "{ name" where it opens and "} name" where it closes
};

class Log_Capture {
public:
    Log_Capture();
    ~Log_Capture();
    Log_Capture(const Log_Capture&) = delete;
    Log_Capture& operator=(const Log_Capture&) = delete;

    std::vector<Log_Line> lines() const;

    // The texts of all lines but the scopes', in order.
    std::vector<std::string> texts() const;

    // How often a line with exactly this text (and, where given, at this verbosity) was written.
    int count(const std::string& text) const;
    int count(int verbosity, const std::string& text) const;

    // Whether a scope of this name was opened at this verbosity.
    bool has_scope(int verbosity, const std::string& name) const;

    void clear();

    void add(Log_Line line);

private:
    mutable std::mutex m_mutex;
    std::vector<Log_Line> m_lines;
    std::string m_id;
};

} // namespace Pelgar::ORBE::test
