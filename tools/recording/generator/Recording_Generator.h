// Tools, recording library. Makes the bytes of a recording, part by part: in every thirty-thousandth of a
// second one super frame of each port, row by row in turn, and one RHD frame. Allocates its buffer once; one
// thread.
#pragma once

#include "generator/RHD_Generator.h"
#include "generator/Recording_Options.h"
#include "generator/Row_Writer.h"
#include "generator/Super_Frame_Generator.h"

#include <vector>

namespace Pelgar::ORBE::recording {

class Recording_Generator {
public:
    // Throws std::invalid_argument when the options contradict themselves.
    explicit Recording_Generator(const Recording_Options& options);

    // The next bytes of the recording, a few MiB at a time, valid until the next call; empty after the end.
    std::span<const std::uint8_t> next();

    // The size of the whole recording without faults, for showing progress.
    std::uint64_t expected_bytes() const;

private:
    void generate_tick();
    void write_rhd_rows();
    bool finished() const;
    void finish();

    Recording_Options m_options;
    Row_Writer m_writer;
    std::vector<Super_Frame_Generator> m_probes;
    RHD_Generator m_rhd;
    std::vector<std::uint16_t> m_rhd_words; // words that do not fill a row yet
    std::uint64_t m_tick = 0;
    std::uint64_t m_bytes_before = 0; // handed out before what the writer holds
    std::uint64_t m_byte_limit = 0;   // where the recording ends, once that is known (with `blocks`)
    bool m_finished = false;
};

// A whole recording in memory, for tests and benchmarks.
std::vector<std::uint8_t> make_recording(const Recording_Options& options);

} // namespace Pelgar::ORBE::recording
