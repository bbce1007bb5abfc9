#include "Output.h"

#include "Kernel32.h"

namespace Pelgar::ORBE::host {

void print(const char* text) {
    unsigned length = 0;
    while (text[length] != '\0') {
        ++length;
    }
    unsigned written = 0;
    WriteFile(GetStdHandle(standard_output), text, length, &written, nullptr);
}

void print(long long number) {
    char digits[24];
    char* first = &digits[sizeof digits - 1];
    *first = '\0';
    const bool negative = number < 0;
    auto rest = static_cast<unsigned long long>(number);
    rest = negative ? 0 - rest : rest;
    do {
        *--first = static_cast<char>('0' + rest % 10);
        rest /= 10;
    } while (rest != 0);
    if (negative) {
        *--first = '-';
    }
    print(first);
}

} // namespace Pelgar::ORBE::host
