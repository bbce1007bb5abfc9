// Tools, recording library. One kind of damage to a recording, and where or how often it strikes, as the user
// writes it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace Pelgar::ORBE::recording {

enum class Fault_Kind : std::uint8_t {
    lost_row,     // a row is not written; the row counter counts it all the same
    bad_marker,   // a row's marker nibble is wrong
    wrong_tag,    // one word of a probe row has a wrong lane tag
    missing_flag, // a super frame starts without its flag
    cut_frame,    // an RHD frame ends early
    unknown_row   // a row of an unknown stream id stands before a row
};

struct Fault {
    Fault_Kind kind = Fault_Kind::lost_row;
    std::optional<unsigned> stream; // strikes only this stream id

    // What a fault can strike is counted from 0 in the order of the file (the rows, flagged rows or RHD
    // frames, of its stream only where one is named). It strikes number `position` and the `count` - 1 after
    // it, or, when `rate` is not 0, each one with that probability.
    std::uint64_t position = 0;
    std::uint64_t count = 1;
    double rate = 0.0;

    std::string text{}; // as the user wrote it
};

// Reads KIND[:STREAM]@POSITION[+COUNT] or KIND[:STREAM]~RATE, for example "lost-row@1000+5",
// "bad-marker:2@70", "lost-row:rhd~0.001". A stream is a port number 1..4 or "rhd". Throws
// std::invalid_argument with a text for the user.
Fault parse_fault(const std::string& text);

} // namespace Pelgar::ORBE::recording
