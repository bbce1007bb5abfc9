#include "Console.h"

#include <array>
#include <charconv>
#include <locale>
#include <sstream>

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
    static_cast<void>(std::fwrite(text.data(), 1, text.size(), stream));
}

} // namespace Pelgar::ORBE::console
