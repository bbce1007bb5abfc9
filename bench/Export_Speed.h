// Benchmarks: how fast a raw recording is exported, beside a plain copy of the same bytes on the same disk in
// the same run.
#pragma once

#include "Json_Writer.h"

#include <iosfwd>
#include <string>
#include <vector>

namespace Pelgar::ORBE::bench {

struct Export_Rate {
    std::string name;                // of the format, or of the copy
    double bytes_per_second;         // until all is written
    double bytes_per_second_to_disk; // until the disk has it
};

// A recording of four probes and the ADC inputs, so many seconds of it, in the working directory, which is
// where all is written. The first rate is that of the copy; each is the median of a few runs that take turns.
// Throws std::runtime_error when the disk has no room.
std::vector<Export_Rate> measure_export(double seconds);

void print_export(std::ostream& out, const std::vector<Export_Rate>& rates);

// A list of objects, one a rate.
void write_exports(Json_Writer& json, const std::vector<Export_Rate>& rates);

} // namespace Pelgar::ORBE::bench
