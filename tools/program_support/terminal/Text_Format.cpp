#include "terminal/Text_Format.h"

#include <algorithm>

namespace Pelgar::ORBE::tools {

namespace {

// Where the line is to be broken: at the last blank within the width that leaves something of it, or else at
// the first one behind that.
std::size_t break_of(std::string_view line, std::size_t indentation, std::size_t width) {
    const std::size_t last = line.substr(0, width + 1).find_last_of(' ');
    if (last != std::string_view::npos && last > indentation) {
        return last;
    }
    return line.find(' ', std::max(width, indentation + 1));
}

void append_line(std::string& text, std::string line, std::size_t width, std::size_t indent) {
    std::size_t indentation = std::min(line.find_first_not_of(' '), line.size());
    const std::string margin(indentation + indent, ' ');
    while (line.size() > width) {
        const std::size_t at = break_of(line, indentation, width);
        const std::size_t rest = at == std::string::npos ? at : line.find_first_not_of(' ', at);
        if (rest == std::string::npos) {
            break;
        }
        text.append(line, 0, at);
        text += '\n';
        line = margin + line.substr(rest);
        indentation = margin.size();
    }
    text += line;
}

} // namespace

std::string wrapped(std::string_view text, std::size_t width, std::size_t indent) {
    std::string result;
    while (true) {
        const std::size_t end = text.find('\n');
        append_line(result, std::string(text.substr(0, end)), std::max<std::size_t>(width, 1), indent);
        if (end == std::string_view::npos) {
            return result;
        }
        result += '\n';
        text.remove_prefix(end + 1);
    }
}

} // namespace Pelgar::ORBE::tools
