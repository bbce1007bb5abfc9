// Layer: logging. How many scopes the calling thread is in. Never blocks, never allocates.
#pragma once

#include "Verbosity.h"

#include <cstddef>

namespace loguru::detail {

void enter_scope(Verbosity verbosity) noexcept;
void leave_scope(Verbosity verbosity) noexcept;

// The open scopes of the calling thread whose records a listener at `verbosity` gets.
std::size_t scope_depth(Verbosity verbosity) noexcept;

} // namespace loguru::detail
