#include "checker/Damage_List.h"

#include "terminal/Text_Format.h"

namespace Pelgar::ORBE::recording {

namespace {

using tools::counted;

class Collector {
public:
    // Adds damage if there is any.
    void add(const std::string& stream, const char* kind, const Finding& finding, const char* one,
             const char* many) {
        const auto rows = finding.first_rows();
        add(stream, kind, finding.count(), counted(finding.count(), one, many), {rows.begin(), rows.end()});
    }

    void add(const std::string& stream, const char* kind, std::uint64_t count, std::string text,
             std::vector<std::uint64_t> first_rows = {}) {
        if (count != 0) {
            m_damage.push_back({stream, kind, std::move(text), count, std::move(first_rows)});
        }
    }

    std::vector<Damage> take() { return std::move(m_damage); }

private:
    std::vector<Damage> m_damage;
};

void add_rows(Collector& damage, const std::string& stream, const Row_Findings& found) {
    damage.add(stream, "row_counter_gaps", found.counter_gaps, "gap in the row counter",
               "gaps in the row counter");
}

void add_file(Collector& damage, const Check_Report& report) {
    damage.add("", "pieces_with_bad_marker", report.bad_markers,
               "piece of 1 MiB holds a row without the marker",
               "pieces of 1 MiB hold a row without the marker");
    damage.add("", "given_up_rows", report.given_up_rows,
               tools::text_of("%llu %s given up from there to the end of %s",
                              tools::wide(report.given_up_rows),
                              tools::plural(report.given_up_rows, "row is", "rows are"),
                              tools::plural(report.bad_markers.count(), "its piece", "their pieces")));
    damage.add("", "odd_bytes", report.odd_bytes,
               counted(report.odd_bytes, "byte", "bytes") + " after the last whole row", {report.rows});
    for (unsigned stream = first_unknown_stream; stream < stream_count; ++stream) {
        const Finding& found = report.unknown[stream].found;
        damage.add("", "unknown_rows", found.count(),
                   counted(found.count(), "row", "rows") + " of the unknown stream id " +
                       std::to_string(stream),
                   {found.first_rows().begin(), found.first_rows().end()});
    }
}

void add_port(Collector& damage, const std::string& stream, const Port_Findings& found) {
    add_rows(damage, stream, found);
    damage.add(stream, "broken_super_frames", found.broken_super_frames, "super frame breaks off",
               "super frames break off");
    damage.add(stream, "missing_flags", found.missing_flags, "super frame starts without its flag",
               "super frames start without their flag");
    damage.add(stream, "discarded_rows", found.discarded_rows, "row belongs to no super frame",
               "rows belong to no super frame");
    damage.add(stream, "frame_counter_gaps", found.frame_counter_gaps, "gap in the frame counter",
               "gaps in the frame counter");
    damage.add(stream, "wrong_tags", found.wrong_tags, "word with a wrong lane tag",
               "words with a wrong lane tag");
}

void add_rhd(Collector& damage, const RHD_Findings& found) {
    add_rows(damage, "RHD", found);
    damage.add("RHD", "cut_frames", found.cut_frames, "frame is cut short", "frames are cut short");
    damage.add("RHD", "bad_preambles", found.bad_preambles, "frame is not followed by the next",
               "frames are not followed by the next");
    damage.add("RHD", "words_before_first_frame", found.words_before,
               counted(found.words_before, "word", "words") + " before the first frame");
}

std::string places(const Check_Report& report, const Damage& damage) {
    if (damage.first_rows.empty()) {
        return {};
    }
    std::string text = damage.first_rows.size() == 1 ? ", row " : ", rows ";
    const char* separator = "";
    for (const std::uint64_t row : damage.first_rows) {
        text += separator + std::to_string(row) + tools::text_of(" (%.3f s)", report.second_of(row));
        separator = ", ";
    }
    return damage.first_rows.size() == Finding::most_places && damage.count > Finding::most_places
               ? text + ", ..."
               : text;
}

} // namespace

std::vector<Damage> damage_of(const Check_Report& report) {
    Collector damage;
    add_file(damage, report);
    for (std::size_t port = 0; port < port_count; ++port) {
        add_port(damage, "port " + std::to_string(port + 1), report.ports[port]);
    }
    add_rhd(damage, report.rhd);
    return damage.take();
}

std::string lines_of(const Check_Report& report, const std::vector<Damage>& damage, std::size_t width) {
    std::string text;
    for (const Damage& one : damage) {
        const std::string who = one.stream.empty() ? "" : one.stream + ": ";
        text += tools::wrapped("  " + who + one.text + places(report, one), width, 2) + "\n";
    }
    return text;
}

} // namespace Pelgar::ORBE::recording
