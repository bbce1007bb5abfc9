#include "command_line/Number_In.h"

#include "terminal/Text_Format.h"

#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <string>

namespace Pelgar::ORBE::tools {

namespace {

std::string refusal(const std::string& text, const char* kind, const std::string& range) {
    return "'" + text + "' is not a " + kind + " " + range;
}

} // namespace

CLI::Validator real_in(double least, double most) {
    const std::string range = text_of("from %g to %g", least, most);
    return CLI::Validator(
        [=](const std::string& text) {
            char* end = nullptr;
            const double value = std::strtod(text.c_str(), &end);
            // Written so that nan, which compares with nothing, is refused.
            const bool good = !text.empty() && *end == '\0' && value >= least && value <= most;
            return good ? std::string() : refusal(text, "number", range);
        },
        text_of("[%g - %g]", least, most));
}

CLI::Validator whole_in(std::uint64_t least, std::uint64_t most) {
    const std::string range = text_of("from %llu to %llu", wide(least), wide(most));
    return CLI::Validator(
        [=](const std::string& text) {
            char* end = nullptr;
            errno = 0;
            // A sign would be taken, and the number wrapped.
            const bool digits = !text.empty() && std::isdigit(static_cast<unsigned char>(text.front())) != 0;
            const std::uint64_t value = std::strtoull(text.c_str(), &end, 0);
            const bool good = digits && *end == '\0' && errno == 0 && value >= least && value <= most;
            return good ? std::string() : refusal(text, "whole number", range);
        },
        most == any_number ? "" : text_of("[%llu - %llu]", wide(least), wide(most)));
}

} // namespace Pelgar::ORBE::tools
