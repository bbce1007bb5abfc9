// Test support: a recording of two probes and the ADC inputs, with gaps, whose every sample is known.
#pragma once

#include "Made_Streams.h"
#include "description/Recording_Description.h"
#include "formats/A_Recording_Writer.h"
#include "formats/Make_Writer.h"

#include <cstdint>
#include <filesystem>
#include <vector>

namespace Pelgar::ORBE::test {

struct Lost_Samples {
    std::uint64_t begin = 0;
    std::uint64_t end = 0;

    bool has(std::uint64_t sample) const { return sample >= begin && sample < end; }
};

// The samples of the made recording, from the trigger on.
inline constexpr std::uint64_t made_samples = 12'000;
// What the second probe begins with, and what it loses; what the ADC inputs lose.
inline constexpr std::uint64_t second_probe_begins = 5;
inline constexpr Lost_Samples lost_of_second_probe{3'000, 3'100};
inline constexpr Lost_Samples lost_of_adc{7'001, 7'002};

// Two probes, on ports 1 and 3, no two channels of which are set alike, and the ADC inputs.
recorder::Recording_Description made_description();

// Hands all packets over, some at a time.
void write_made_packets(recorder::A_Recording_Writer& writer,
                        const recorder::Recording_Description& description);

// And finishes.
void make_recording(recorder::Format format, const std::filesystem::path& folder,
                    const recorder::Recording_Description& description);

} // namespace Pelgar::ORBE::test
