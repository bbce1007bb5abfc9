// Program orbe-view, sources. A recording in pieces that follow each other in time, as Recording_Source plays
// it. What is known of it is asked on any thread; it is followed and shown on the source's thread, which
// blocks on the disk.
#pragma once

#include "description/Recording_Description.h"
#include "history/Histories.h"
#include "sources/A_Source.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Pelgar::ORBE::view {

class A_Recording {
public:
    A_Recording() = default;
    virtual ~A_Recording() = default;
    A_Recording(const A_Recording&) = delete;
    A_Recording& operator=(const A_Recording&) = delete;

    // ---- What is known of it. Any thread; nothing blocks.

    // What the user sees.
    virtual std::string name() const = 0;
    virtual const recorder::Recording_Description& description() const = 0;
    // Whether it is being made.
    virtual bool grows() const = 0;
    // What is wrong with it; empty: nothing.
    virtual std::string problem() const = 0;

    // Pieces that are known, by now.
    virtual std::size_t size() const = 0;
    // The first AP sample of a piece; nothing for one that is not known yet.
    virtual std::optional<std::uint64_t> begin_of(std::size_t piece) const = 0;
    // The piece in which the sample lies; the last one for a sample beyond it.
    virtual std::size_t piece_of(std::uint64_t sample) const = 0;
    // Samples up to the end of what is known.
    virtual std::uint64_t length() const = 0;
    // Of what is there by now.
    virtual double known_part() const = 0;
    virtual std::vector<Damage_Counts> damage(std::size_t stretches) const = 0;
    // So many samples may come at once while it is being made. Who follows its end stays so far behind it.
    virtual std::uint64_t burst() const = 0;

    // ---- The source's thread. All throw std::exception with what keeps it from going on.

    // Looks for what has come since.
    virtual void look() = 0;
    // What is shown next begins with this piece; nothing is in the histories.
    virtual void begin(std::size_t piece, Histories& histories) = 0;
    // Puts the next piece into the histories. False when it is not there yet.
    virtual bool show_next(Histories& histories) = 0;
    // The piece that is shown next.
    virtual std::size_t next() const = 0;
    // How the streams were in the pieces from `begin` up to `end`, which is known; called for stretches that
    // follow each other since the last `begin`.
    virtual Health health_of(std::size_t begin, std::size_t end, const Histories& histories) = 0;
};

} // namespace Pelgar::ORBE::view
