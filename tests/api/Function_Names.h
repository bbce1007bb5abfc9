// Test support: the names of the exported functions, from the list, from texts, and from the header.
#pragma once

#include <set>
#include <string>
#include <vector>

namespace Pelgar::ORBE::test {

// The functions of the published API in NeuropixAPI_Functions.inc, in its order.
std::vector<std::string> listed_published_functions();

// The box's own additions in that list.
std::vector<std::string> listed_additions();

// Both together.
std::vector<std::string> listed_functions();

// Those that answer NOTSUPPORTED.
std::set<std::string> listed_unsupported_functions();

// The names of all functions that a header declares with NP_EXPORT, in order.
std::vector<std::string> functions_declared_in(const std::string& header_text);

// The lines of a text that are neither empty nor comments (#).
std::vector<std::string> lines_in(const std::string& text);

// A file of the source tree.
std::string source_text(const std::string& path);

std::vector<std::string> sorted(std::vector<std::string> names);

} // namespace Pelgar::ORBE::test
