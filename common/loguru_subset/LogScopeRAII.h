// Layer: logging. A stretch of a function whose begin and end are logged. Lives on the stack of the thread
// that made it; blocks while its two records are written.
#pragma once

#include "Printf_Format.h"
#include "Verbosity.h"

#include <chrono>
#include <string>

namespace loguru {

class LogScopeRAII {
public:
    // Logs "{ name" and indents what the thread logs from now on. Silent, and silent at the end too, when
    // nobody listens to this verbosity now.
    LogScopeRAII(Verbosity verbosity, const char* file, unsigned line, const char* format, ...) noexcept
        LOGURU_SUBSET_PRINTF_FORMAT(5, 6);

    // Logs "} 0.123 s: name".
    ~LogScopeRAII();

    LogScopeRAII(const LogScopeRAII&) = delete;
    LogScopeRAII& operator=(const LogScopeRAII&) = delete;

private:
    Verbosity m_verbosity;
    const char* m_file;
    unsigned m_line;
    bool m_open = false;
    std::string m_name;
    std::chrono::steady_clock::time_point m_begin;
};

} // namespace loguru
