// Tools, recording library. Random numbers that depend on nothing but a seed and a position, so that any
// value of a recording can be worked out without generating what lies before it. Any thread; never blocks.
#pragma once

#include <cstdint>

namespace Pelgar::ORBE::recording {

// A well-mixed 64-bit number for every input.
constexpr std::uint64_t mix(std::uint64_t value) {
    value += 0x9E3779B97F4A7C15;
    value = (value ^ (value >> 30)) * 0xBF58476D1CE4E5B9;
    value = (value ^ (value >> 27)) * 0x94D049BB133111EB;
    return value ^ (value >> 31);
}

constexpr std::uint64_t mix(std::uint64_t seed, std::uint64_t position) {
    return mix(mix(seed) ^ position);
}

// The upper bits of a hash as a number from 0 to below 1.
constexpr double unit_interval(std::uint64_t hash) {
    return static_cast<double>(hash >> 11) * 0x1.0p-53;
}

} // namespace Pelgar::ORBE::recording
