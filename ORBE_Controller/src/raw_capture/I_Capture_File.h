// Layer: device controller. Where a raw capture writes to. Used on the capture's thread alone, which may
// block in it for as long as the disk does.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>

namespace Pelgar::ORBE {

class I_Capture_File {
public:
    I_Capture_File() = default;
    virtual ~I_Capture_File() = default;
    I_Capture_File(const I_Capture_File&) = delete;
    I_Capture_File& operator=(const I_Capture_File&) = delete;

    // Both throw std::system_error when bytes have not got to the file, or the file is gone.
    virtual void write(std::span<const std::uint8_t> bytes) = 0;
    virtual void close() = 0;

    // As the user finds it.
    virtual const std::string& name() const = 0;
};

// Makes the file of a run; throws std::system_error.
using Capture_File_Factory = std::function<std::unique_ptr<I_Capture_File>(const std::string& name)>;

} // namespace Pelgar::ORBE
