// Fuzzing: the checker of recordings takes any bytes, and accounts for all of them.
//
// An input begins with a byte: the number of whole pieces of 1 MiB, modulo three. The rest is repeated until
// the pieces are full, and once more behind them.
#include "Fuzz_Target.h"

#include "Byte_Reader.h"
#include "Require.h"
#include "checker/Check_Text.h"
#include "checker/Recording_Checker.h"
#include "stream_format/Piece_Reader.h"

#include <memory>
#include <sstream>
#include <string>

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace Pelgar::ORBE::recording;
    using namespace Pelgar::ORBE::test;

    constexpr unsigned most_pieces = 2;
    Byte_Reader input(data, size);
    const std::size_t pieces = input.byte() % (most_pieces + 1);
    const auto bytes = input.rest();
    std::string recording;
    while (!bytes.empty() && recording.size() < pieces * piece_bytes) {
        recording.append(bytes.begin(), bytes.end());
    }
    recording.append(bytes.begin(), bytes.end());

    Piece_Reader reader(std::make_unique<std::istringstream>(recording));
    Recording_Checker checker;
    std::size_t whole_pieces = 0;
    for (; reader.next(); ++whole_pieces) {
        checker.look_at_piece(reader.piece());
    }
    checker.look_at_rest(reader.rest());
    const Check_Report report = checker.report();

    require(whole_pieces == recording.size() / piece_bytes, "whole pieces");
    require(report.bytes == recording.size(), "bytes");
    require(report.rows == recording.size() / row_bytes, "rows");
    require(report.odd_bytes == recording.size() % row_bytes, "odd bytes");
    require(report.bytes_never_pushed == recording.size() % piece_bytes, "bytes that are never pushed");
    require((report.bad_markers.count() == 0) == (report.given_up_rows == 0), "rows are given up for a bad marker");
    require(report.bad_markers.count() <= whole_pieces + 1, "one bad marker a piece");
    std::uint64_t rows = report.given_up_rows + report.rhd.rows + report.unknown_rows();
    for (const Port_Findings& port : report.ports) {
        rows += port.rows;
        require(port.counter_gaps.count() <= port.rows, "a gap a row");
        require(port.super_frames * rows_per_super_frame + port.discarded_rows.count() <= port.rows, "super frames");
        require(port.wrong_tags.count() <= port.rows * row_words, "a wrong tag a word");
        require(port.packets == 0, "packets take a whole block, which takes more pieces");
    }
    require(rows == report.rows, "every row belongs somewhere");
    require(report.rhd.packets * rhd_frame_words(0) <= report.rhd.rows * row_words, "ADC packets");
    require(!text_for_people("recording", report, 80).empty(), "text for people");
    require(!text_for_machines("recording", report).empty(), "text for machines");
    return 0;
}
