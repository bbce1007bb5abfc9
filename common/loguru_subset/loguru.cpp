#include "loguru.hpp"

#include "Callback_Sink.h"
#include "File_Sink.h"
#include "Log_Router.h"

#include <cstdarg>
#include <cstdlib>
#include <exception>
#include <memory>
#include <string>

namespace loguru {

bool add_file(const char* path, FileMode mode, Verbosity verbosity) noexcept {
    try {
        // Binary, so that a line ends in the same way on every system.
        detail::Log_Router::instance().add(
            std::make_shared<detail::File_Sink>(path, mode == Truncate ? "wb" : "ab", verbosity));
        return true;
    } catch (const std::exception& failure) {
        LOG_F(ERROR, "Failed to open '%s': %s", path, failure.what());
        return false;
    }
}

void add_callback(const char* id, log_handler_t callback, void* user_data, Verbosity verbosity) {
    detail::Log_Router::instance().add(
        std::make_shared<detail::Callback_Sink>(id, callback, user_data, verbosity));
}

bool remove_callback(const char* id) noexcept {
    return detail::Log_Router::instance().remove(id);
}

void remove_all_callbacks() noexcept {
    detail::Log_Router::instance().remove_all();
}

void log(Verbosity verbosity, const char* file, unsigned line, const char* format, ...) noexcept {
    if (verbosity <= current_verbosity_cutoff()) {
        std::va_list arguments;
        va_start(arguments, format);
        try {
            const std::string text = detail::format_text(format, arguments);
            detail::Log_Router::instance().deliver({verbosity, file, line, "", text.c_str()});
        } catch (...) {
            // Without memory for its text the record itself says at least where it comes from.
            detail::Log_Router::instance().deliver({verbosity, file, line, "", format});
        }
        va_end(arguments);
    }
    if (verbosity <= Verbosity_FATAL) {
        std::abort();
    }
}

} // namespace loguru
