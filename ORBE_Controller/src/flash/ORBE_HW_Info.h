// Layer: device controller. The record about a box that its maker keeps in the configuration flash. What the
// bytes mean is left to those who write and read them. A plain value.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace Pelgar::ORBE {

struct ORBE_HW_Info {
    static constexpr std::size_t size = 32;

    std::array<std::uint8_t, size> bytes{};

    bool operator==(const ORBE_HW_Info&) const = default;
};

} // namespace Pelgar::ORBE
