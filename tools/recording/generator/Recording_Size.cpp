#include "generator/Recording_Size.h"

#include <algorithm>

namespace Pelgar::ORBE::recording {

namespace {

std::uint64_t rhd_rows(const Recording_Options& options, std::uint64_t ticks) {
    return options.rhd ? ticks * rhd_frame_words(options.rhd_streams) / row_words : 0;
}

std::uint64_t rows(const Recording_Options& options, std::uint64_t ticks) {
    return ticks * rows_per_super_frame * options.ports.size() + rhd_rows(options, ticks);
}

// Where the recording ends that brings so many whole blocks: a block leaves the demultiplexer when the row
// after it comes, and the end lies on a piece.
std::uint64_t rows_of_blocks(const Recording_Options& options) {
    const std::uint64_t needed =
        rows(options, options.blocks * super_frames_per_block) + options.ports.size();
    constexpr std::uint64_t rows_per_piece = piece_bytes / row_bytes;
    return (needed + rows_per_piece - 1) / rows_per_piece * rows_per_piece;
}

// The greatest number of ticks that are written whole within so many rows.
std::uint64_t whole_ticks(const Recording_Options& options, std::uint64_t limit) {
    std::uint64_t ticks = limit / rows(options, 1);
    while (rows(options, ticks) > limit) {
        --ticks;
    }
    while (rows(options, ticks + 1) <= limit) {
        ++ticks;
    }
    return ticks;
}

} // namespace

Recording_Size size_of(const Recording_Options& options) {
    const bool in_blocks = options.blocks != 0;
    const std::uint64_t total = in_blocks ? rows_of_blocks(options) : rows(options, options.super_frames);
    const std::uint64_t ticks = in_blocks ? whole_ticks(options, total) : options.super_frames;
    // What is left belongs to one more tick, which is cut off: the ports' rows in turn, then those of the RHD
    // stream.
    const std::uint64_t rest = total - rows(options, ticks);
    const std::uint64_t ports = options.ports.size();
    const std::uint64_t port_rest = std::min(rest, rows_per_super_frame * ports);

    Recording_Size size;
    size.bytes = total * row_bytes + options.extra_bytes;
    for (std::uint64_t i = 0; i < ports; ++i) {
        Stream_Size& port = size.streams.at(options.ports[i] - 1);
        port.rows = ticks * rows_per_super_frame + (port_rest + ports - 1 - i) / ports;
        port.super_frames = ticks + (port_rest > i ? 1 : 0);
    }
    if (options.rhd) {
        Stream_Size& rhd = size.streams[rhd_stream];
        rhd.rows = rhd_rows(options, ticks) + rest - port_rest;
        rhd.rhd_frames = ticks + (rest > port_rest ? 1 : 0);
    }
    return size;
}

} // namespace Pelgar::ORBE::recording
