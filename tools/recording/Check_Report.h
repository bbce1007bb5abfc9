// Tools, recording library. What a recording holds and what is wrong with it.
#pragma once

#include "Wire_Format.h"

#include <array>
#include <cstdint>

namespace Pelgar::ORBE::recording {

// What is found in every stream.
struct Row_Findings {
    std::uint64_t rows = 0;
    std::uint64_t counter_gaps = 0; // places where the row counter jumps
};

struct Port_Findings : Row_Findings {
    std::uint64_t discarded_rows = 0; // rows that belong to no super frame
    std::uint64_t super_frames = 0;
    std::uint64_t broken_super_frames = 0; // begun but not complete
    std::uint64_t missing_flags = 0;       // super frames that start without their flag
    std::uint64_t frame_counter_gaps = 0;
    std::uint64_t wrong_tags = 0; // words
    std::uint64_t packets = 0;    // what a host receives

    bool clean() const {
        return counter_gaps == 0 && discarded_rows == 0 && broken_super_frames == 0 && missing_flags == 0 &&
               frame_counter_gaps == 0 && wrong_tags == 0;
    }
};

struct RHD_Findings : Row_Findings {
    std::uint64_t frames = 0;
    std::uint64_t streams = 0;       // data streams, by the length of the frames
    std::uint64_t cut_frames = 0;    // frames that are shorter than the others
    std::uint64_t bad_preambles = 0; // frames that no next frame follows where it should
    std::uint64_t words_before = 0;  // words before the first frame
    std::uint64_t packets = 0;       // what a host receives

    bool clean() const {
        return counter_gaps == 0 && cut_frames == 0 && bad_preambles == 0 && words_before == 0;
    }
};

struct Check_Report {
    std::uint64_t bytes = 0;
    std::uint64_t rows = 0;
    std::uint64_t bad_markers = 0;        // pieces in which a row without marker ends the reading
    std::uint64_t given_up_rows = 0;      // those rows and what follows them in their pieces
    std::uint64_t odd_bytes = 0;          // bytes after the last whole row
    std::uint64_t bytes_never_pushed = 0; // what follows the last whole piece of 1 MiB
    std::array<Port_Findings, port_count> ports;
    RHD_Findings rhd;
    std::array<Row_Findings, stream_count> unknown; // by stream id, from 5 on

    std::uint64_t unknown_rows() const {
        std::uint64_t sum = 0;
        for (const Row_Findings& findings : unknown) {
            sum += findings.rows;
        }
        return sum;
    }

    bool clean() const {
        for (const Port_Findings& port : ports) {
            if (!port.clean()) {
                return false;
            }
        }
        return rhd.clean() && bad_markers == 0 && odd_bytes == 0 && unknown_rows() == 0;
    }
};

} // namespace Pelgar::ORBE::recording
