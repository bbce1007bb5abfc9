// Tools, recording library. What a recording holds and what is wrong with it.
#pragma once

#include "checker/Finding.h"
#include "stream_format/Wire_Format.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace Pelgar::ORBE::recording {

// What is found in every stream.
struct Row_Findings {
    std::uint64_t rows = 0;
    Finding counter_gaps; // places where the row counter jumps
};

struct Port_Findings : Row_Findings {
    Finding discarded_rows; // rows that belong to no super frame
    std::uint64_t super_frames = 0;
    Finding broken_super_frames; // begun but not complete
    Finding missing_flags;       // super frames that start without their flag
    Finding frame_counter_gaps;
    Finding wrong_tags;        // words
    std::uint64_t packets = 0; // what a host receives

    bool clean() const {
        return counter_gaps.count() == 0 && discarded_rows.count() == 0 && broken_super_frames.count() == 0 &&
               missing_flags.count() == 0 && frame_counter_gaps.count() == 0 && wrong_tags.count() == 0;
    }
};

struct RHD_Findings : Row_Findings {
    std::uint64_t frames = 0;
    std::uint64_t streams = 0;      // data streams, by the length of the frames
    Finding cut_frames;             // frames that are shorter than the others
    Finding bad_preambles;          // frames that no next frame follows where it should
    std::uint64_t words_before = 0; // words before the first frame
    std::uint64_t packets = 0;      // what a host receives

    bool clean() const {
        return counter_gaps.count() == 0 && cut_frames.count() == 0 && bad_preambles.count() == 0 &&
               words_before == 0;
    }
};

struct Unknown_Findings : Row_Findings {
    Finding found; // its rows
};

struct Check_Report {
    std::uint64_t bytes = 0;
    std::uint64_t rows = 0;
    std::uint64_t plausible_rows = 0;     // rows with the marker and a known stream id, given up or not
    Finding bad_markers;                  // pieces in which a row without marker ends the reading
    std::uint64_t given_up_rows = 0;      // those rows and what follows them in their pieces
    std::uint64_t odd_bytes = 0;          // bytes after the last whole row
    std::uint64_t bytes_never_pushed = 0; // what follows the last whole piece of 1 MiB
    std::array<Port_Findings, port_count> ports;
    RHD_Findings rhd;
    std::array<Unknown_Findings, stream_count> unknown; // by stream id, from 5 on

    std::uint64_t unknown_rows() const {
        std::uint64_t sum = 0;
        for (const Unknown_Findings& findings : unknown) {
            sum += findings.rows;
        }
        return sum;
    }

    // Of all kinds, what a host receives.
    std::uint64_t packets() const {
        std::uint64_t sum = rhd.packets;
        for (const Port_Findings& port : ports) {
            sum += port.packets;
        }
        return sum;
    }

    // Of a file of another kind about one row in fifty looks like a row by chance; of a recording whose every
    // row has a row of an unknown stream beside it, one half.
    bool is_recording() const { return plausible_rows != 0 && plausible_rows >= rows / 4; }

    // How long the recording lasts, by the stream that says most.
    double seconds() const {
        std::uint64_t super_frames = rhd.frames;
        for (const Port_Findings& port : ports) {
            super_frames = std::max(super_frames, port.rows / rows_per_super_frame);
        }
        return static_cast<double>(super_frames) / super_frames_per_second;
    }

    // When the row was recorded. All streams have their own constant rate, so that the file has one, too.
    double second_of(std::uint64_t row) const {
        const std::uint64_t read = rows - given_up_rows;
        return read == 0 ? 0.0 : static_cast<double>(row) / static_cast<double>(read) * seconds();
    }

    bool clean() const {
        for (const Port_Findings& port : ports) {
            if (!port.clean()) {
                return false;
            }
        }
        return rhd.clean() && bad_markers.count() == 0 && odd_bytes == 0 && unknown_rows() == 0;
    }
};

} // namespace Pelgar::ORBE::recording
