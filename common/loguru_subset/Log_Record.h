// Layer: logging. One record on its way to the listeners.
#pragma once

#include "Verbosity.h"

namespace loguru::detail {

struct Log_Record {
    Verbosity verbosity;
    const char* file;
    unsigned line;
    const char* prefix;
    const char* text;
};

} // namespace loguru::detail
