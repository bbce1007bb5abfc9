#include "faults/Fault.h"

#include "numbers/Parse_Unsigned.h"
#include "stream_format/Wire_Format.h"

#include <cstdlib>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace Pelgar::ORBE::recording {

namespace {

constexpr std::pair<std::string_view, Fault_Kind> fault_names[] = {
    {"lost-row", Fault_Kind::lost_row},   {"bad-marker", Fault_Kind::bad_marker},
    {"wrong-tag", Fault_Kind::wrong_tag}, {"missing-flag", Fault_Kind::missing_flag},
    {"cut-frame", Fault_Kind::cut_frame}, {"unknown-row", Fault_Kind::unknown_row},
};

Fault_Kind parse_kind(std::string_view text) {
    for (const auto& [name, kind] : fault_names) {
        if (text == name) {
            return kind;
        }
    }
    throw std::invalid_argument(
        "unknown fault '" + std::string(text) +
        "' (lost-row, bad-marker, wrong-tag, missing-flag, cut-frame or unknown-row)");
}

unsigned parse_stream(std::string_view text) {
    if (text == "rhd") {
        return rhd_stream;
    }
    const std::uint64_t port = parse_unsigned(text, "stream");
    if (port < 1 || port > port_count) {
        throw std::invalid_argument("stream '" + std::string(text) + "' is not a port (1 to 4) or rhd");
    }
    return static_cast<unsigned>(port - 1);
}

double parse_rate(std::string_view text) {
    const std::string copy(text);
    char* end = nullptr;
    const double rate = std::strtod(copy.c_str(), &end);
    if (copy.empty() || *end != '\0' || !(rate > 0.0 && rate <= 1.0)) {
        throw std::invalid_argument("rate '" + copy + "' is not a number above 0 and up to 1");
    }
    return rate;
}

} // namespace

Fault parse_fault(const std::string& text) {
    const std::string_view whole = text;
    const std::size_t where = whole.find_first_of("@~");
    if (where == std::string_view::npos) {
        throw std::invalid_argument("fault '" + text +
                                    "' says neither where (@POSITION) nor how often (~RATE)");
    }
    const std::string_view who = whole.substr(0, where);
    const std::string_view place = whole.substr(where + 1);

    Fault fault;
    fault.text = text;
    const std::size_t colon = who.find(':');
    fault.kind = parse_kind(who.substr(0, colon));
    if (colon != std::string_view::npos) {
        fault.stream = parse_stream(who.substr(colon + 1));
    }
    if (whole[where] == '~') {
        fault.rate = parse_rate(place);
        return fault;
    }
    const std::size_t plus = place.find('+');
    fault.position = parse_unsigned(place.substr(0, plus), "position");
    if (plus != std::string_view::npos) {
        fault.count = parse_unsigned(place.substr(plus + 1), "count");
    }
    return fault;
}

} // namespace Pelgar::ORBE::recording
