// Program orbe-view, sources. What is looked at. Its threads fill the histories; it is asked and told on the
// threads of the server.
#pragma once

#include "history/Histories.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace Pelgar::ORBE::view {

struct Source_Status {
    std::string name;       // what the user sees
    std::string kind;       // "recording", "growing", "box" or "simulation"
    std::string problem;    // what keeps it from going on; empty: nothing
    bool can_jump = false;  // to another time
    bool is_playing = true; // whether time goes on
    bool is_streaming = true;
    std::uint64_t position = 0; // the AP sample before which pictures end
    double length = 0.0;        // seconds, as far as it is known
    double known_part = 1.0;    // of the recording, that has been looked through
};

// What is wrong in one stretch of a recording.
struct Damage_Counts {
    std::uint32_t row_gaps = 0;
    std::uint32_t frame_gaps = 0;
    std::uint32_t wrong_tags = 0;
    std::uint32_t others = 0; // markers, flags, unknown rows, RHD frames
    std::uint64_t lost = 0;   // samples, where a recording has a table of them

    std::uint64_t all() const { return lost + row_gaps + frame_gaps + wrong_tags + others; }

    Damage_Counts& operator+=(const Damage_Counts& more) {
        row_gaps += more.row_gaps;
        frame_gaps += more.frame_gaps;
        wrong_tags += more.wrong_tags;
        others += more.others;
        lost += more.lost;
        return *this;
    }

    bool operator==(const Damage_Counts&) const = default;
};

class A_Source {
public:
    A_Source() = default;
    virtual ~A_Source() = default;
    A_Source(const A_Source&) = delete;
    A_Source& operator=(const A_Source&) = delete;

    virtual const Histories& histories() const = 0;
    virtual Source_Status status() const = 0;

    // ---- Of sources that can jump; the others do nothing.

    // To a time in seconds, and goes on from there or stays. Never waits.
    virtual void jump(double /*seconds*/, bool /*plays*/) {}

    virtual void play(bool /*plays*/) {}

    // The whole length in equal stretches.
    virtual std::vector<Damage_Counts> damage(std::size_t /*stretches*/) const { return {}; }

    // ---- Of the box, and only when the user has allowed it.

    // Lets data stream, or not. False when the source cannot do that.
    virtual bool stream(bool /*streams*/) { return false; }
};

} // namespace Pelgar::ORBE::view
