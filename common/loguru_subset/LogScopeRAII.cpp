#include "LogScopeRAII.h"

#include "Log_Router.h"
#include "Scope_Depth.h"

#include <array>
#include <cstdarg>
#include <cstdio>

namespace loguru {

LogScopeRAII::LogScopeRAII(Verbosity verbosity, const char* file, unsigned line, const char* format,
                           ...) noexcept
    : m_verbosity(verbosity), m_file(file), m_line(line) {
    if (verbosity > current_verbosity_cutoff()) {
        return;
    }
    std::va_list arguments;
    va_start(arguments, format);
    try {
        m_name = detail::format_text(format, arguments);
        m_open = true;
    } catch (...) {
        // Without memory for its name the scope stays silent.
        m_open = false;
    }
    va_end(arguments);
    if (m_open) {
        m_begin = std::chrono::steady_clock::now();
        detail::Log_Router::instance().deliver({m_verbosity, m_file, m_line, "{ ", m_name.c_str()});
        detail::enter_scope(m_verbosity);
    }
}

LogScopeRAII::~LogScopeRAII() {
    if (!m_open) {
        return;
    }
    detail::leave_scope(m_verbosity);
    const std::chrono::duration<double> duration = std::chrono::steady_clock::now() - m_begin;
    constexpr std::size_t number_size = 64;
    std::array<char, number_size> end{};
    std::snprintf(end.data(), end.size(), "} %.3f s: ", duration.count());
    try {
        const std::string text = end.data() + m_name;
        detail::Log_Router::instance().deliver({m_verbosity, m_file, m_line, "", text.c_str()});
    } catch (...) {
        // Without memory for its last record the scope closes silently.
        m_open = false;
    }
}

} // namespace loguru
