// Layer: common. The fixed diagnostic lines that the system prints straight to standard output and standard
// error. Called from every thread. A message is put together first and written in one call, so that lines of
// different threads never mix and no stream state (such as hexadecimal) leaks from one message to the next.
#pragma once

#include <concepts>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

namespace Pelgar::ORBE::console {

// A number that a message shows in lower-case hexadecimal without a prefix.
struct Hex {
    std::uint64_t value;
};

void append(std::string& text, std::string_view part);
void append(std::string& text, const char* part);
void append(std::string& text, char part);
void append(std::string& text, Hex part);
void append(std::string& text, float part);
void append(std::string& text, double part);

template <std::integral Integer>
void append(std::string& text, Integer part) {
    text += std::to_string(part);
}

// Writes the whole text in one call, byte for byte: a line ends in "\n" on every system. Blocks only as long
// as the stream's own lock is held and, on Windows, while the system takes the text.
void write(std::FILE* stream, std::string_view text) noexcept;

template <typename... Parts>
std::string compose(const Parts&... parts) {
    std::string text;
    (append(text, parts), ...);
    return text;
}

// Prints the parts, one after the other, to standard output. Allocates; any thread.
template <typename... Parts>
void out(const Parts&... parts) {
    write(stdout, compose(parts...));
}

// Prints the parts, one after the other, to standard error. Allocates; any thread.
template <typename... Parts>
void err(const Parts&... parts) {
    write(stderr, compose(parts...));
}

} // namespace Pelgar::ORBE::console
