// Layer: logging. How important a record is, and up to which verbosity anybody listens. Any thread; never
// blocks.
#pragma once

#include <algorithm>
#include <atomic>

namespace loguru {

// The smaller, the more important: errors and warnings are negative, 0 is information, 1 to 9 more and more
// detail.
using Verbosity = int;

enum NamedVerbosity : Verbosity {
    Verbosity_OFF = -9, // listens to nothing
    Verbosity_FATAL = -3,
    Verbosity_ERROR = -2,
    Verbosity_WARNING = -1,
    Verbosity_INFO = 0,
    Verbosity_0 = 0,
    Verbosity_1 = 1,
    Verbosity_2 = 2,
    Verbosity_3 = 3,
    Verbosity_4 = 4,
    Verbosity_5 = 5,
    Verbosity_6 = 6,
    Verbosity_7 = 7,
    Verbosity_8 = 8,
    Verbosity_9 = 9,
    Verbosity_MAX = 9
};

// Up to which verbosity records go to standard error; information at first.
extern std::atomic<Verbosity> g_stderr_verbosity;

namespace detail {

// The highest verbosity of the files and callbacks.
extern std::atomic<Verbosity> g_sink_verbosity;

} // namespace detail

// The highest verbosity that anybody listens to.
inline Verbosity current_verbosity_cutoff() noexcept {
    return std::max(g_stderr_verbosity.load(std::memory_order_relaxed),
                    detail::g_sink_verbosity.load(std::memory_order_relaxed));
}

} // namespace loguru
