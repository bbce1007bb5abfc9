#include "terminal/File_Descriptors.h"

#include <fcntl.h>
#include <sys/stat.h>

#if defined(_WIN32)
#include <cstdio>
#include <io.h>
#else
#include <unistd.h>
#endif

namespace Pelgar::ORBE::tools::descriptors {

#if defined(_WIN32)

int open_to_append(const std::filesystem::path& file) {
    const int descriptor = _wopen(file.c_str(), _O_WRONLY | _O_CREAT | _O_APPEND | _O_NOINHERIT | _O_BINARY,
                                  _S_IREAD | _S_IWRITE);
    // The system knows nothing of appending, which is the C runtime's: who writes past it begins where this
    // leads.
    if (descriptor >= 0) {
        _lseeki64(descriptor, 0, SEEK_END);
    }
    return descriptor;
}

int duplicate(int descriptor) {
    return _dup(descriptor);
}

int duplicate_onto(int descriptor, int target) {
    return _dup2(descriptor, target);
}

int close(int descriptor) {
    return _close(descriptor);
}

bool is_terminal(int descriptor) {
    return _isatty(descriptor) != 0;
}

int write(int descriptor, const char* bytes, std::size_t size) {
    return _write(descriptor, bytes, static_cast<unsigned>(size));
}

#else

int open_to_append(const std::filesystem::path& file) {
    return ::open(file.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, S_IRUSR | S_IWUSR);
}

int duplicate(int descriptor) {
    return ::dup(descriptor);
}

int duplicate_onto(int descriptor, int target) {
    return ::dup2(descriptor, target);
}

int close(int descriptor) {
    return ::close(descriptor);
}

bool is_terminal(int descriptor) {
    return ::isatty(descriptor) != 0;
}

int write(int descriptor, const char* bytes, std::size_t size) {
    return static_cast<int>(::write(descriptor, bytes, size));
}

#endif

} // namespace Pelgar::ORBE::tools::descriptors
