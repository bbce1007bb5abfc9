// Layer: logging. One record as a callback gets it; valid during the call only.
#pragma once

#include "Verbosity.h"

namespace loguru {

// A line of a log file is the preamble, the indentation, the prefix and the message, one behind the other.
struct Message {
    Verbosity verbosity;
    const char* filename; // as the compiler named it, with its folders
    unsigned line;
    const char* preamble;    // date, time, uptime, thread, file and line, verbosity
    const char* indentation; // ".   " for each scope that the thread is in and that this listener saw open
    const char* prefix;      // "{ " where a scope opens, otherwise empty
    const char* message;
};

} // namespace loguru
