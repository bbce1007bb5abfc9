#include "Recording_Fault.h"

#include <filesystem>
#include <fstream>

namespace Pelgar::ORBE::test {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t piece_bytes = std::size_t{1} << 20U;

const std::vector beginning_to_stream{Phase::open, Phase::start, Phase::stream};

Recording_Fault struck(const char* name, std::vector<Phase> phases, void (*strike)()) {
    Recording_Fault fault{name, std::move(phases)};
    fault.strike = [strike](Recording_Visit&) { strike(); };
    return fault;
}

void keep_part(std::uintmax_t divisor) {
    fs::resize_file(Recording_Visit::recording, fs::file_size(Recording_Visit::recording) / divisor);
}

// Of a slow disk the pump gets nothing, or the first piece and a part of the second one.
Recording_Fault slow_recording() {
    Recording_Fault fault{"the recording is handed out slowly",
                          {Phase::start, Phase::stream, Phase::stop, Phase::close}};
    // A pipe has no beginning to go back to, as host mode does.
    fault.in_host_mode = false;
    fault.prepare = [](Recording_Visit& visit, Phase phase) {
        visit.make_slow(phase == Phase::start ? 0 : piece_bytes + piece_bytes / 2);
    };
    fault.heal = [](Recording_Visit& visit) { visit.end_slowness(); };
    return fault;
}

} // namespace

std::vector<Recording_Fault> all_recording_faults() {
    return {
        struck("the recording is missing", beginning_to_stream,
               [] { fs::remove(Recording_Visit::recording); }),
        struck("a folder is in its place", {Phase::open},
               [] {
                   fs::remove(Recording_Visit::recording);
                   fs::create_directory(Recording_Visit::recording);
               }),
        struck("the recording is empty", beginning_to_stream,
               [] { fs::resize_file(Recording_Visit::recording, 0); }),
        struck("the recording is cut off in its middle", {Phase::open, Phase::start}, [] { keep_part(2); }),
        struck("the recording ends inside a row", beginning_to_stream,
               [] {
                   fs::resize_file(Recording_Visit::recording,
                                   fs::file_size(Recording_Visit::recording) - 40);
               }),
        slow_recording(),
    };
}

} // namespace Pelgar::ORBE::test
