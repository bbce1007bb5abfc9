#include "terminal/Terminal.h"

#include "terminal/File_Descriptors.h"

#include <cstdlib>
#include <string_view>

#if defined(_WIN32)
#include <io.h>
#include <windows.h>
#else
#include <sys/ioctl.h>
#endif

namespace Pelgar::ORBE::tools::terminal {

namespace {

constexpr std::size_t usual_width = 80;

// 0 when the terminal does not tell.
std::size_t told_width(int file_descriptor) {
#if defined(_WIN32)
    CONSOLE_SCREEN_BUFFER_INFO info{};
    const auto console = reinterpret_cast<HANDLE>(_get_osfhandle(file_descriptor));
    return GetConsoleScreenBufferInfo(console, &info) != 0 ? static_cast<std::size_t>(info.dwSize.X) : 0;
#else
    winsize size{};
    return ioctl(file_descriptor, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
#endif
}

} // namespace

std::size_t width(int file_descriptor) {
    if (!descriptors::is_terminal(file_descriptor)) {
        return unlimited_width;
    }
    const std::size_t told = told_width(file_descriptor);
    return told == 0 ? usual_width : told;
}

bool can_redraw(int file_descriptor) {
    if (!descriptors::is_terminal(file_descriptor)) {
        return false;
    }
    const char* const name = std::getenv("TERM");
#if defined(_WIN32)
    // The console of this system has no name.
    return name == nullptr || std::string_view(name) != "dumb";
#else
    return name != nullptr && *name != '\0' && std::string_view(name) != "dumb";
#endif
}

} // namespace Pelgar::ORBE::tools::terminal
