#include "Check_Command.h"

#include "checker/Check_Text.h"
#include "checker/Recording_Checker.h"
#include "library_run/Interrupt.h"
#include "stream_format/Piece_Reader.h"
#include "terminal/Exit_Codes.h"
#include "terminal/Progress_Bar.h"
#include "terminal/Terminal.h"
#include "terminal/Text_Format.h"

#include <cstdio>
#include <stdexcept>
#include <system_error>

namespace Pelgar::ORBE::recording {

namespace {

constexpr int clean = 0;
constexpr int something_wrong = 1;
constexpr int unreadable = 2;
constexpr int output_descriptor = 1;

constexpr const char* footer = "Exit codes: 0 nothing is wrong, 1 something is wrong, 2 the file cannot be "
                               "read or is no recording of this box, "
                               "130 stopped by the user.\n\n"
                               "The line packets says what a host receives when the recording is played: a "
                               "last piece of less than 1 MiB is "
                               "never pushed, and of each port the last block of 1,792 super frames is "
                               "dropped unless it is complete and one "
                               "more row follows.\n\n"
                               "Of each kind of damage the first places are told: the row, counted from 0 "
                               "over the whole file, and the second "
                               "of the recording, reckoned from how far into the file that row lies.";

} // namespace

Check_Command::Check_Command(CLI::App& app)
    : m_command(app.add_subcommand("check", "Look into a recording and report what is wrong with it")) {
    m_command->add_option("FILE", m_path, "The recording")->required();
    m_command->add_flag("--json", m_json, "Print JSON instead of a table");
    m_command->footer(footer);
}

int Check_Command::run() const {
    tools::catch_interrupts();
    Check_Report report;
    try {
        Piece_Reader reader{std::filesystem::path(m_path)};
        Recording_Checker checker;
        std::error_code unknown_size;
        tools::Progress_Bar progress("Checking " + m_path, std::filesystem::file_size(m_path, unknown_size));
        while (reader.next()) {
            checker.look_at_piece(reader.piece());
            progress.show(reader.bytes_read());
            if (tools::interrupted()) {
                return tools::exit_codes::interrupted;
            }
        }
        checker.look_at_rest(reader.rest());
        report = checker.report();
    } catch (const std::runtime_error& error) {
        std::fprintf(stderr, "orbe-recording: %s\n", error.what());
        return unreadable;
    }
    if (report.bytes == 0) {
        std::fprintf(stderr, "orbe-recording: '%s' is empty\n", m_path.c_str());
        return unreadable;
    }
    if (!report.is_recording()) {
        std::fprintf(
            stderr,
            "orbe-recording: '%s' is not a recording of this box: of its %s of 16 bytes %llu %s the marker "
            "and a known stream id\n",
            m_path.c_str(), tools::counted(report.rows, "row", "rows").c_str(),
            tools::wide(report.plausible_rows), tools::plural(report.plausible_rows, "has", "have"));
        return unreadable;
    }
    const std::string text = m_json
                                 ? text_for_machines(m_path, report)
                                 : text_for_people(m_path, report, tools::terminal::width(output_descriptor));
    std::fputs(text.c_str(), stdout);
    return report.clean() ? clean : something_wrong;
}

} // namespace Pelgar::ORBE::recording
