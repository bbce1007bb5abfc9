#include "common/Host_Path.h"

#include <cerrno>
#include <cstdio>
#include <system_error>

#if defined(_WIN32)
#include <windows.h>
#else
#include <filesystem>
#endif

namespace Pelgar::ORBE {

std::string why_unreadable(const char* path) {
    int error = 0;
    if (opens_as_directory(path)) {
        error = EISDIR;
    } else if (std::FILE* const file = std::fopen(path, "rb")) {
        std::fclose(file);
    } else {
        error = errno;
    }
    return error == 0 ? std::string() : std::generic_category().message(error);
}

#if defined(_WIN32)

// File streams open no directory here.
bool opens_as_directory(const char* /*path*/) {
    return false;
}

namespace {

// Answers whether there is such a file.
bool identify(const char* path, BY_HANDLE_FILE_INFORMATION& identity) {
    const HANDLE file = CreateFileA(path, 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return false;
    }
    const bool identified = GetFileInformationByHandle(file, &identity) != FALSE;
    CloseHandle(file);
    return identified;
}

} // namespace

bool is_same_file(const char* left, const char* right) {
    BY_HANDLE_FILE_INFORMATION one{};
    BY_HANDLE_FILE_INFORMATION other{};
    return identify(left, one) && identify(right, other) &&
           one.dwVolumeSerialNumber == other.dwVolumeSerialNumber &&
           one.nFileIndexHigh == other.nFileIndexHigh && one.nFileIndexLow == other.nFileIndexLow;
}

#else

bool opens_as_directory(const char* path) {
    std::error_code no_such_file;
    return std::filesystem::is_directory(path, no_such_file);
}

bool is_same_file(const char* left, const char* right) {
    std::error_code no_such_file;
    return std::filesystem::equivalent(left, right, no_such_file);
}

#endif

} // namespace Pelgar::ORBE
