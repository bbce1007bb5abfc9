#include "Verbosity.h"

namespace loguru {

std::atomic<Verbosity> g_stderr_verbosity{Verbosity_INFO};

namespace detail {

std::atomic<Verbosity> g_sink_verbosity{Verbosity_OFF};

} // namespace detail

} // namespace loguru
