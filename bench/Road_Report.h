// Benchmarks: runs of the whole road as tables for people and as JSON.
#pragma once

#include "Json_Writer.h"
#include "Road_Run.h"

#include <iosfwd>
#include <vector>

namespace Pelgar::ORBE::bench {

// One run in detail: rate, CPU time thread by thread, latency, memory.
void print_run(std::ostream& out, const Road_Result& result);

// A line a run.
void print_growth(std::ostream& out, const std::vector<Road_Result>& results);

// An object of a list for each run.
void write_runs(Json_Writer& json, const std::vector<Road_Result>& results);

} // namespace Pelgar::ORBE::bench
