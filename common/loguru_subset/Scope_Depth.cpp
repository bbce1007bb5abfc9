#include "Scope_Depth.h"

#include <algorithm>
#include <array>
#include <numeric>

namespace loguru::detail {

namespace {

constexpr std::size_t verbosity_count = Verbosity_MAX - Verbosity_OFF + 1;

// The open scopes of a thread by their verbosity.
thread_local std::array<std::size_t, verbosity_count> t_open_scopes{};

std::size_t index_of(Verbosity verbosity) noexcept {
    return static_cast<std::size_t>(std::clamp<Verbosity>(verbosity, Verbosity_OFF, Verbosity_MAX) -
                                    Verbosity_OFF);
}

} // namespace

void enter_scope(Verbosity verbosity) noexcept {
    ++t_open_scopes[index_of(verbosity)];
}

void leave_scope(Verbosity verbosity) noexcept {
    --t_open_scopes[index_of(verbosity)];
}

std::size_t scope_depth(Verbosity verbosity) noexcept {
    const auto end = t_open_scopes.begin() + static_cast<std::ptrdiff_t>(index_of(verbosity)) + 1;
    return std::accumulate(t_open_scopes.begin(), end, std::size_t{0});
}

} // namespace loguru::detail
