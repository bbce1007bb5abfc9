#include "checker/Check_Text.h"

#include "checker/Damage_List.h"
#include "terminal/Text_Format.h"
#include "terminal/Text_Table.h"

#include <algorithm>
#include <utility>

namespace Pelgar::ORBE::recording {

namespace {

using tools::counted;

// Lines of prose are no longer than this, however wide the terminal is.
constexpr std::size_t widest_prose = 100;

std::string seconds_of(std::uint64_t frames) {
    return tools::text_of("%.3f", static_cast<double>(frames) / super_frames_per_second);
}

std::string port_table(const Check_Report& report, std::size_t width) {
    tools::Text_Table table({"", "port 1", "port 2", "port 3", "port 4"});
    const auto add = [&](const char* name, auto&& value) {
        tools::Text_Table::Cells line{name};
        for (const Port_Findings& found : report.ports) {
            line.push_back(value(found));
        }
        table.add(std::move(line));
    };
    const auto add_number = [&](const char* name, auto&& number) {
        add(name, [&](const Port_Findings& found) { return std::to_string(number(found)); });
    };
    using Port = const Port_Findings&;
    add_number("rows", [](Port found) { return found.rows; });
    add_number("gaps in the row counter", [](Port found) { return found.counter_gaps.count(); });
    add_number("rows discarded", [](Port found) { return found.discarded_rows.count(); });
    add_number("super frames", [](Port found) { return found.super_frames; });
    add_number("super frames broken off", [](Port found) { return found.broken_super_frames.count(); });
    add_number("super frames without flag", [](Port found) { return found.missing_flags.count(); });
    add_number("gaps in the frame counter", [](Port found) { return found.frame_counter_gaps.count(); });
    add_number("wrong tags", [](Port found) { return found.wrong_tags.count(); });
    add("seconds", [](Port found) { return seconds_of(found.super_frames); });
    add_number("packets", [](Port found) { return found.packets; });
    return table.text(width);
}

std::string rhd_table(const RHD_Findings& found, std::size_t width) {
    tools::Text_Table table(
        {"", "rows", "row gaps", "frames", "streams", "cut", "bad preambles", "seconds", "packets"});
    table.add({"RHD", std::to_string(found.rows), std::to_string(found.counter_gaps.count()),
               std::to_string(found.frames), std::to_string(found.streams),
               std::to_string(found.cut_frames.count()), std::to_string(found.bad_preambles.count()),
               seconds_of(found.frames), std::to_string(found.packets)});
    return table.text(width);
}

std::string quoted(std::string_view text) {
    std::string result = "\"";
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if (character == '"' || character == '\\') {
            result += '\\';
            result += character;
        } else if (byte < 0x20) {
            result += tools::text_of("\\u%04x", static_cast<unsigned>(byte));
        } else {
            result += character;
        }
    }
    return result + "\"";
}

std::string field(std::string_view name, std::uint64_t value) {
    return "\"" + std::string(name) + "\": " + std::to_string(value);
}

std::string port_object(std::size_t port, const Port_Findings& found) {
    return "    {" + field("port", port) + ", " + field("rows", found.rows) + ", " +
           field("row_counter_gaps", found.counter_gaps.count()) + ", " +
           field("discarded_rows", found.discarded_rows.count()) + ", " +
           field("super_frames", found.super_frames) + ", " +
           field("broken_super_frames", found.broken_super_frames.count()) + ", " +
           field("missing_flags", found.missing_flags.count()) + ", " +
           field("frame_counter_gaps", found.frame_counter_gaps.count()) + ", " +
           field("wrong_tags", found.wrong_tags.count()) + ", " + field("packets", found.packets) + "}";
}

std::string rhd_object(const RHD_Findings& found) {
    return "{" + field("rows", found.rows) + ", " + field("row_counter_gaps", found.counter_gaps.count()) +
           ", " + field("frames", found.frames) + ", " + field("streams", found.streams) + ", " +
           field("cut_frames", found.cut_frames.count()) + ", " +
           field("bad_preambles", found.bad_preambles.count()) + ", " +
           field("words_before_first_frame", found.words_before) + ", " + field("packets", found.packets) +
           "}";
}

std::string damage_object(const Check_Report& report, const Damage& damage) {
    std::string first;
    for (const std::uint64_t row : damage.first_rows) {
        first += (first.empty() ? "{" : ", {") + field("row", row) +
                 tools::text_of(", \"second\": %.3f}", report.second_of(row));
    }
    return "{\"stream\": " + quoted(damage.stream) + ", \"kind\": " + quoted(damage.kind) + ", " +
           field("count", damage.count) + ", \"first\": [" + first + "]}";
}

} // namespace

std::string text_for_people(std::string_view name, const Check_Report& report, std::size_t width) {
    const std::string note = "(packets: what a host receives. A recording is played in pieces of 1 MiB and a "
                             "shorter last one is never "
                             "pushed: here " +
                             counted(report.bytes_never_pushed, "byte", "bytes") +
                             ". Of each port the last block of 1,792 super frames is dropped unless it is "
                             "complete and one more row "
                             "follows.)\n";
    std::string text = tools::wrapped(std::string(name) + ": " + counted(report.bytes, "byte", "bytes") +
                                          ", " + counted(report.rows, "row", "rows") + "\n",
                                      width, 2);
    text += port_table(report, width);
    text += rhd_table(report.rhd, width);
    text += tools::wrapped(note, std::min(width, widest_prose));
    if (report.clean()) {
        return text + "Nothing is wrong with this recording.\n";
    }
    return text + "Something is wrong with this recording:\n" + lines_of(report, damage_of(report), width);
}

std::string text_for_machines(std::string_view name, const Check_Report& report) {
    std::string text =
        "{\n  \"file\": " + quoted(name) + ",\n  \"clean\": " + (report.clean() ? "true" : "false");
    text += ",\n  " + field("bytes", report.bytes) + ",\n  " + field("rows", report.rows) + ",\n  " +
            field("pieces_with_bad_marker", report.bad_markers.count()) + ",\n  " +
            field("given_up_rows", report.given_up_rows) + ",\n  " + field("odd_bytes", report.odd_bytes) +
            ",\n  " + field("bytes_never_pushed", report.bytes_never_pushed) + ",\n  \"ports\": [\n";
    for (std::size_t port = 0; port < port_count; ++port) {
        text += port_object(port + 1, report.ports[port]) + (port + 1 < port_count ? ",\n" : "\n");
    }
    text += "  ],\n  \"rhd\": " + rhd_object(report.rhd) + ",\n  \"unknown\": [";
    const char* separator = "";
    for (unsigned stream = first_unknown_stream; stream < stream_count; ++stream) {
        if (report.unknown[stream].rows != 0) {
            text += separator;
            text += "{" + field("stream", stream) + ", " + field("rows", report.unknown[stream].rows) + ", " +
                    field("row_counter_gaps", report.unknown[stream].counter_gaps.count()) + "}";
            separator = ", ";
        }
    }
    text += "],\n  \"damage\": [";
    separator = "\n    ";
    for (const Damage& damage : damage_of(report)) {
        text += separator + damage_object(report, damage);
        separator = ",\n    ";
    }
    return text + "]\n}\n";
}

} // namespace Pelgar::ORBE::recording
