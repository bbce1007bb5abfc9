#include "common/Host_Path.h"

#if !defined(_WIN32)
#include <filesystem>
#include <system_error>
#endif

namespace Pelgar::ORBE {

#if defined(_WIN32)

// File streams open no directory here.
bool opens_as_directory(const char* /*path*/) {
    return false;
}

#else

bool opens_as_directory(const char* path) {
    std::error_code no_such_file;
    return std::filesystem::is_directory(path, no_such_file);
}

#endif

} // namespace Pelgar::ORBE
