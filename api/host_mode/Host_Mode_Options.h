// Layer: façade, host mode. What the switch file asks for. Called on the host's threads; blocks for the file
// system only.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace Pelgar::ORBE::npoe_adapter {

// Present: published hosts find what they expect. The first line says as which device the box appears.
inline constexpr const char* host_mode_switch = "ORBE_HOST_MODE";

struct Firmware_Version {
    int major = 0;
    int minor = 0;
    int build = 0;

    bool operator==(const Firmware_Version&) const = default;
};

struct Host_Mode_Options {
    enum class Devices : std::uint8_t { usb, pxi, both };

    Devices devices = Devices::usb;
    // Of the PXI basestation and its connect card.
    Firmware_Version basestation{2, 0, 169};
    Firmware_Version connect_card{3, 2, 189};

    bool operator==(const Host_Mode_Options&) const = default;
};

// Reads "usb", "both" or "pxi", the last one optionally with the two versions ("pxi 2.0.169 3.2.189"); an
// empty line means "usb". Throws std::invalid_argument with a text for the user.
Host_Mode_Options parse_host_mode(const std::string& line);

// What the switch file in the working directory asks for; nothing, and not a word, where there is none.
// Throws like `parse_host_mode`.
std::optional<Host_Mode_Options> read_host_mode_switch();

} // namespace Pelgar::ORBE::npoe_adapter
