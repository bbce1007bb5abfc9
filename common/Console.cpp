#include "common/Console.h"

#include <array>
#include <charconv>
#include <locale>
#include <sstream>

#if defined(_WIN32)
#include <io.h>
#include <windows.h>
#endif

namespace Pelgar::ORBE::console {

namespace {

// The default format of an output stream: six significant digits, the shorter of the two notations.
template <typename Real>
void append_real(std::string& text, Real part) {
    std::ostringstream stream;
    stream.imbue(std::locale::classic()); // whatever the host has made of the global one
    stream << part;
    text += stream.str();
}

#if defined(_WIN32)

// Straight to the file behind the stream: the C library would end every line in two characters, and keep
// lines back that lead to a file or another program.
void write_bytes(std::FILE* stream, std::string_view text) noexcept {
    std::fflush(stream);
    const int descriptor = _fileno(stream);
    if (descriptor < 0) {
        return; // a host without a console
    }
    DWORD written = 0;
    static_cast<void>(WriteFile(reinterpret_cast<HANDLE>(_get_osfhandle(descriptor)), text.data(),
                                static_cast<DWORD>(text.size()), &written, nullptr));
}

#else

void write_bytes(std::FILE* stream, std::string_view text) noexcept {
    static_cast<void>(std::fwrite(text.data(), 1, text.size(), stream));
}

#endif

} // namespace

void append(std::string& text, std::string_view part) {
    text += part;
}

void append(std::string& text, const char* part) {
    text += part;
}

void append(std::string& text, char part) {
    text += part;
}

void append(std::string& text, Hex part) {
    std::array<char, 16> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), part.value, 16).ptr;
    text.append(digits.data(), end);
}

void append(std::string& text, float part) {
    append_real(text, part);
}

void append(std::string& text, double part) {
    append_real(text, part);
}

void write(std::FILE* stream, std::string_view text) noexcept {
    // A console that cannot be written to must not disturb the acquisition, so the result is not looked at.
    write_bytes(stream, text);
}

} // namespace Pelgar::ORBE::console
