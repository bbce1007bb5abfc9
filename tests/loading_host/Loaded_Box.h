// Test support. The basestation of a library that the program loads itself, on the recording that the switch
// file in the working directory names. One thread; reading blocks until the packets are there.
#pragma once

#include "Loaded_Library.h"

#include <string>

namespace Pelgar::ORBE::host {

// All of them throw std::runtime_error when the library answers something else than success.
class Loaded_Box {
public:
    explicit Loaded_Box(const std::string& library);

    void open() const;
    void start() const;
    // Reads a dozen packets from the first port.
    void read() const;
    void close() const;

private:
    Loaded_Library m_library;
};

} // namespace Pelgar::ORBE::host
