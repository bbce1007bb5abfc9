// Layer: common. File names as hosts give them. On Windows they are in the host's code page, so that they are
// handed to the C library and the file streams as they are and never made a std::filesystem::path. Any
// thread; asks the file system.
#pragma once

#include <string>

namespace Pelgar::ORBE {

// Whether there is a directory of that name that a file stream would open all the same, to fail at the first
// read only.
bool opens_as_directory(const char* path);

// The system's reason why a file of that name cannot be read, for people; empty when it can.
std::string why_unreadable(const char* path);

// Whether both names lead to one file. False when either leads to none.
bool is_same_file(const char* left, const char* right);

} // namespace Pelgar::ORBE
