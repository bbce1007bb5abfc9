#include "Function_Names.h"

#include <algorithm>
#include <fstream>
#include <regex>
#include <sstream>
#include <stdexcept>

namespace Pelgar::ORBE::test {

namespace {

// Comments, strings' quotes aside, and preprocessor lines with their continuations.
std::string without_comments_and_directives(const std::string& text) {
    static const std::regex unwanted(R"(//[^\n]*|/\*(?:[^*]|\*(?!/))*\*/|(?:^|\n)[ \t]*#(?:\\\n|[^\n])*)");
    return std::regex_replace(text, unwanted, "\n");
}

} // namespace

std::vector<std::string> listed_published_functions() {
    return {
#define NP_FUNCTION(result, name, parameters, arguments) #name,
#define NP_ADDITION(result, name, parameters, arguments)
#include "NeuropixAPI_Functions.inc"
    };
}

std::vector<std::string> listed_additions() {
    return {
#define NP_FUNCTION(result, name, parameters, arguments)
#define NP_ADDITION(result, name, parameters, arguments) #name,
#include "NeuropixAPI_Functions.inc"
    };
}

std::vector<std::string> listed_functions() {
    return {
#define NP_FUNCTION(result, name, parameters, arguments) #name,
#define NP_ADDITION(result, name, parameters, arguments) #name,
#include "NeuropixAPI_Functions.inc"
    };
}

std::set<std::string> listed_unsupported_functions() {
    return {
#define NP_FUNCTION(result, name, parameters, arguments)
#define NP_ADDITION(result, name, parameters, arguments)
#define NP_UNSUPPORTED(result, name, parameters, arguments) #name,
#define NP_UNSUPPORTED_OWN_TWIN(result, name, parameters, arguments) #name,
#include "NeuropixAPI_Functions.inc"
    };
}

std::vector<std::string> functions_declared_in(const std::string& header_text) {
    static const std::regex declaration(R"(\bNP_EXPORT\b[^;(]*?(\w+)\s*\()");
    const std::string text = without_comments_and_directives(header_text);
    std::vector<std::string> names;
    for (std::sregex_iterator found(text.begin(), text.end(), declaration), end; found != end; ++found) {
        names.push_back((*found)[1]);
    }
    return names;
}

std::vector<std::string> lines_in(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        if (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
        if (!line.empty() && line.front() != '#') {
            lines.push_back(line);
        }
    }
    return lines;
}

std::string source_text(const std::string& path) {
    const std::ifstream file(std::string(ORBE_SOURCE_DIR) + "/" + path, std::ios::binary);
    if (!file) {
        throw std::runtime_error("cannot read " + path);
    }
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

std::vector<std::string> sorted(std::vector<std::string> names) {
    std::sort(names.begin(), names.end());
    return names;
}

} // namespace Pelgar::ORBE::test
