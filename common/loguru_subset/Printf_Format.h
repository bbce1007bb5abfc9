// Layer: logging. Printf's formats: checked by the compilers that can, and turned into text.
#pragma once

#include <cstdarg>
#include <cstdio> // defines __MINGW_PRINTF_FORMAT
#include <string>

// Stands behind the declaration of a function whose parameter number `format_at` (counted from 1, `this`
// included) is a printf format for the parameters from `first` on.
#if defined(__MINGW_PRINTF_FORMAT)
#define LOGURU_SUBSET_PRINTF_FORMAT(format_at, first)                                                        \
    __attribute__((format(__MINGW_PRINTF_FORMAT, format_at, first)))
#elif defined(__GNUC__)
#define LOGURU_SUBSET_PRINTF_FORMAT(format_at, first) __attribute__((format(printf, format_at, first)))
#else
#define LOGURU_SUBSET_PRINTF_FORMAT(format_at, first)
#endif

namespace loguru::detail {

// The text, or the format itself when the C library cannot carry it out. Throws std::bad_alloc.
std::string format_text(const char* format, std::va_list arguments) LOGURU_SUBSET_PRINTF_FORMAT(1, 0);

} // namespace loguru::detail
