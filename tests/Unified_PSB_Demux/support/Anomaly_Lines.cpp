#include "Anomaly_Lines.h"

#include <algorithm>
#include <sstream>

namespace Pelgar::ORBE::test {

const std::vector<std::string_view> row_beginnings = {"Possible demux row counter", "Resync to super frame",
                                                      "Async_PSB_And_RHD_Demux : Main mux"};
const std::vector<std::string_view> port_beginnings = {"Warning shift reg",   "Super frame align",
                                                       "check_frame_number",  " stream DW",
                                                       "frame_number rolled", "Incrementing m_three"};

Lines lines_of(const std::string& text, const std::vector<std::string_view>& beginnings) {
    Lines lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        const auto begins = [&](std::string_view beginning) { return line.starts_with(beginning); };
        if (std::any_of(beginnings.begin(), beginnings.end(), begins)) {
            lines.push_back(line);
        }
    }
    return lines;
}

Lines sorted(Lines lines) {
    std::sort(lines.begin(), lines.end());
    return lines;
}

} // namespace Pelgar::ORBE::test
