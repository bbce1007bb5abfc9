// Layer: logging. The library's log, under loguru's names, so that a loguru package can take its place: a
// source includes <loguru.hpp> and cannot tell which of the two it got. Called from every thread. A call
// whose verbosity nobody listens to costs two relaxed loads; any other blocks while the record is written.
//
// A record goes to standard error, up to `g_stderr_verbosity`, and then to the files and callbacks in the
// order in which they were added, each up to its own verbosity, on the calling thread. No logging call
// throws.
#pragma once

#include "LogScopeRAII.h"
#include "Message.h"
#include "Printf_Format.h"
#include "Verbosity.h"

namespace loguru {

enum FileMode { Truncate, Append };

// What a callback is called with: its own `user_data` and a record that is valid during the call only.
using log_handler_t = void (*)(void* user_data, const Message& message);

// Writes the records up to `verbosity` to the file as well, one line each. `path` is taken by the C library,
// in the encoding of the process; it names the file for `remove_callback`, too. Answers false, and logs why,
// when the file cannot be opened. The file stays open until the process ends or the file is removed.
bool add_file(const char* path, FileMode mode, Verbosity verbosity) noexcept;

// Hands the records up to `verbosity` to the callback as well. Calls of different threads never overlap. What
// a callback logs itself is dropped; what it throws is ignored.
void add_callback(const char* id, log_handler_t callback, void* user_data, Verbosity verbosity);

// Takes away the callback or file that was added first under this name. When it returns, the callback is not
// running on any other thread and will not be called again. Answers false when there is none.
bool remove_callback(const char* id) noexcept;

// Takes away all callbacks and files.
void remove_all_callbacks() noexcept;

// Logs one record with printf's formats. A record at FATAL ends the process by std::abort.
void log(Verbosity verbosity, const char* file, unsigned line, const char* format, ...) noexcept
    LOGURU_SUBSET_PRINTF_FORMAT(4, 5);

} // namespace loguru

// VLOG_F(1, "slotID : %d", slotID). The arguments are not evaluated when nobody listens.
#define VLOG_F(verbosity, ...)                                                                               \
    (((verbosity) > ::loguru::current_verbosity_cutoff())                                                    \
         ? static_cast<void>(0)                                                                              \
         : ::loguru::log((verbosity), __FILE__, __LINE__, __VA_ARGS__))

// LOG_F(ERROR, "Open driver failed"): the verbosity by its name. The name is pasted before anything else, so
// that a macro of the same name, as <windows.h> has one, does not get in between.
#define LOG_F(verbosity_name, ...) VLOG_F(::loguru::Verbosity_##verbosity_name, __VA_ARGS__)

#define LOGURU_SUBSET_JOIN_EXPANDED(first, second) first##second
#define LOGURU_SUBSET_JOIN(first, second) LOGURU_SUBSET_JOIN_EXPANDED(first, second)

// VLOG_SCOPE_F(1, "arm"): logs "{ arm" here and "} 0.123 s: arm" where the enclosing block ends.
#define VLOG_SCOPE_F(verbosity, ...)                                                                         \
    const ::loguru::LogScopeRAII LOGURU_SUBSET_JOIN(loguru_scope_, __LINE__)((verbosity), __FILE__,          \
                                                                             __LINE__, __VA_ARGS__)

#define LOG_SCOPE_F(verbosity_name, ...) VLOG_SCOPE_F(::loguru::Verbosity_##verbosity_name, __VA_ARGS__)
