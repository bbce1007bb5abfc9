#include "Check_Text.h"

#include "Text_Format.h"

#include <cstdio>

namespace Pelgar::ORBE::recording {

namespace {

double seconds_of(std::uint64_t frames) {
    return static_cast<double>(frames) / super_frames_per_second;
}

// A line of the summary, only where there is something to say.
void add_problem(std::string& text, std::uint64_t count, const char* what) {
    if (count != 0) {
        text += "  " + std::to_string(count) + " " + what + "\n";
    }
}

std::string port_lines(const Check_Report& report) {
    std::string text =
        "Stream         rows  row gaps discarded super frames  broken unflagged frame gaps wrong tags"
        "   seconds   packets\n";
    for (std::size_t port = 0; port < port_count; ++port) {
        const Port_Findings& found = report.ports[port];
        text += text_of("port %zu %12llu %9llu %9llu %12llu %7llu %9llu %10llu %10llu %9.3f %9llu\n",
                        port + 1, wide(found.rows), wide(found.counter_gaps), wide(found.discarded_rows),
                        wide(found.super_frames), wide(found.broken_super_frames), wide(found.missing_flags),
                        wide(found.frame_counter_gaps), wide(found.wrong_tags),
                        seconds_of(found.super_frames), wide(found.packets));
    }
    return text;
}

std::string rhd_lines(const RHD_Findings& found) {
    std::string text =
        "Stream         rows  row gaps    frames   streams       cut bad preambles   seconds   packets\n";
    text += text_of("RHD    %12llu %9llu %9llu %9llu %9llu %13llu %9.3f %9llu\n", wide(found.rows),
                    wide(found.counter_gaps), wide(found.frames), wide(found.streams), wide(found.cut_frames),
                    wide(found.bad_preambles), seconds_of(found.frames), wide(found.packets));
    return text;
}

std::string quoted(std::string_view text) {
    std::string result = "\"";
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if (character == '"' || character == '\\') {
            result += '\\';
            result += character;
        } else if (byte < 0x20) {
            result += text_of("\\u%04x", static_cast<unsigned>(byte));
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
           field("row_counter_gaps", found.counter_gaps) + ", " +
           field("discarded_rows", found.discarded_rows) + ", " + field("super_frames", found.super_frames) +
           ", " + field("broken_super_frames", found.broken_super_frames) + ", " +
           field("missing_flags", found.missing_flags) + ", " +
           field("frame_counter_gaps", found.frame_counter_gaps) + ", " +
           field("wrong_tags", found.wrong_tags) + ", " + field("packets", found.packets) + "}";
}

std::string rhd_object(const RHD_Findings& found) {
    return "{" + field("rows", found.rows) + ", " + field("row_counter_gaps", found.counter_gaps) + ", " +
           field("frames", found.frames) + ", " + field("streams", found.streams) + ", " +
           field("cut_frames", found.cut_frames) + ", " + field("bad_preambles", found.bad_preambles) + ", " +
           field("words_before_first_frame", found.words_before) + ", " + field("packets", found.packets) +
           "}";
}

} // namespace

std::string text_for_people(std::string_view name, const Check_Report& report) {
    std::string text = std::string(name) + ": " + std::to_string(report.bytes) + " bytes, " +
                       std::to_string(report.rows) + " rows\n";
    text += port_lines(report);
    text += rhd_lines(report.rhd);
    text +=
        "(packets: what a host receives. A recording is played in pieces of 1 MiB and a shorter last one is\n"
        "never pushed: here " +
        std::to_string(report.bytes_never_pushed) +
        " bytes. Of each port the last block of 1,792 super frames is dropped\n"
        "unless it is complete and one more row follows.)\n";
    if (report.clean()) {
        return text + "Nothing is wrong with this recording.\n";
    }
    text += "Something is wrong with this recording:\n";
    add_problem(text, report.bad_markers, "pieces of 1 MiB hold a row without the marker");
    add_problem(text, report.given_up_rows, "rows are given up from there to the end of their pieces");
    add_problem(text, report.odd_bytes, "bytes after the last whole row");
    for (unsigned stream = first_unknown_stream; stream < stream_count; ++stream) {
        const std::string what = "rows of the unknown stream id " + std::to_string(stream);
        add_problem(text, report.unknown[stream].rows, what.c_str());
    }
    for (std::size_t port = 0; port < port_count; ++port) {
        if (!report.ports[port].clean()) {
            text += "  port " + std::to_string(port + 1) + ": see the table\n";
        }
    }
    if (!report.rhd.clean()) {
        text += "  RHD: see the table\n";
    }
    add_problem(text, report.rhd.words_before, "RHD words before the first frame");
    return text;
}

std::string text_for_machines(std::string_view name, const Check_Report& report) {
    std::string text =
        "{\n  \"file\": " + quoted(name) + ",\n  \"clean\": " + (report.clean() ? "true" : "false");
    text += ",\n  " + field("bytes", report.bytes) + ",\n  " + field("rows", report.rows) + ",\n  " +
            field("pieces_with_bad_marker", report.bad_markers) + ",\n  " +
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
                    field("row_counter_gaps", report.unknown[stream].counter_gaps) + "}";
            separator = ", ";
        }
    }
    return text + "]\n}\n";
}

} // namespace Pelgar::ORBE::recording
