// Layer: device controller (Linux). Owns an open device file. Closing may wait for the driver.
#pragma once

#include <string>

namespace Pelgar::ORBE {

class File_Descriptor {
public:
    File_Descriptor() = default;
    // Opens the file for reading and writing. On failure the object is closed and errno tells why.
    explicit File_Descriptor(const std::string& path);
    ~File_Descriptor();
    File_Descriptor(const File_Descriptor&) = delete;
    File_Descriptor& operator=(const File_Descriptor&) = delete;
    // Closes what the left side held.
    File_Descriptor& operator=(File_Descriptor&& other) noexcept;

    bool is_open() const { return m_descriptor != closed; }

    int get() const { return m_descriptor; }

    void close();

private:
    static constexpr int closed = -1;

    int m_descriptor = closed;
};

} // namespace Pelgar::ORBE
