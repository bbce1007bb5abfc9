// Endurance test. What one mode runs on: brings the library up, lets it stream and takes it down, as often as
// a run has openings. The main thread.
#pragma once

#include "Endless_Rows.h"
#include "Judging_Host.h"

#include <cstdint>
#include <string>

namespace Pelgar::ORBE::test {

// What every stage is made for.
struct Stage_Options {
    Endless_Options rows;
    unsigned ports = 1; // ports 1 to this one have a probe
};

class A_Stage {
public:
    A_Stage() = default;
    A_Stage(const A_Stage&) = delete;
    A_Stage& operator=(const A_Stage&) = delete;
    virtual ~A_Stage() = default;

    // The most ticks of one opening.
    virtual std::uint64_t longest_opening() const = 0;

    // Opens, and lets so many ticks of data come. Throws std::runtime_error when the library refuses.
    virtual void begin(std::uint64_t ticks) = 0;

    // How many ticks' packets all readers of this opening have.
    virtual std::uint64_t received() const = 0;

    // Whether no more packets will come in this opening.
    virtual bool is_over() const = 0;

    // Stops and closes. Answers what was wrong at the end; empty when nothing was.
    virtual std::string end() = 0;

    virtual Judging_Host& host() = 0;

    // Of the stream, in all openings.
    virtual std::uint64_t bytes() const = 0;
};

} // namespace Pelgar::ORBE::test
