// Tools, what all programs share. The C runtime's file descriptors under one set of names; POSIX and Windows
// call them differently. Every function answers -1 when it fails.
#pragma once

#include <cstddef>
#include <filesystem>

namespace Pelgar::ORBE::tools::descriptors {

// Opens a file of this user's own for writing at its end, and makes it when there is none.
int open_to_append(const std::filesystem::path& file);
int duplicate(int descriptor);
int duplicate_onto(int descriptor, int target);
int close(int descriptor);
bool is_terminal(int descriptor);

// Writes up to `size` bytes and answers how many.
int write(int descriptor, const char* bytes, std::size_t size);

} // namespace Pelgar::ORBE::tools::descriptors
