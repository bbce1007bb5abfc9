// Tools, recorder. Small files, read and written at once. Blocks on the disk.
#pragma once

#include <filesystem>
#include <string>
#include <system_error>

namespace Pelgar::ORBE::recorder {

// The error of the C library's last call, about this file.
std::system_error file_error(const std::filesystem::path& path, const std::string& what);

// Both throw std::system_error with the file's name.
std::string read_file(const std::filesystem::path& path);
// A reader, and whoever looks after the power has failed, finds either the file that was there or this one.
void write_file(const std::filesystem::path& path, const std::string& content);

} // namespace Pelgar::ORBE::recorder
