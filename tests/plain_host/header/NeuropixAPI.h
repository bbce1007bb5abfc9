// Stands in for NeuropixAPI.h: the plain header's types and functions where those of C++ are, so that
// tests/api/Published_*.cpp hold them against the same spelled-out values, layouts and types.
#pragma once

#include <cstddef>
#include <cstdint>
#include <ctime>

namespace Neuropixels {
#include <NeuropixAPI_plain.h>
}
