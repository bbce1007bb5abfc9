// Test support: picks the anomaly messages out of what the demultiplexer prints.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Pelgar::ORBE::test {

using Lines = std::vector<std::string>;

// How the messages of the row split begin, and those of the port workers.
extern const std::vector<std::string_view> row_beginnings;
extern const std::vector<std::string_view> port_beginnings;

// The lines of a text that begin with one of the beginnings, in order.
Lines lines_of(const std::string& text, const std::vector<std::string_view>& beginnings);

// Ports print side by side, so that only which lines there are is certain.
Lines sorted(Lines lines);

} // namespace Pelgar::ORBE::test
