// Program orbe-view, sources. Where in a recording something is wrong, piece by piece as it is found. However
// much there is, it takes little room and is asked quickly. Whoever holds it sees to it that one thread at a
// time uses it; nothing blocks.
#pragma once

#include "sources/A_Source.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Pelgar::ORBE::view {

class Damage_Map {
public:
    // So many places are told apart at most. Beyond that neighbours become one, and a place is wrong by half
    // a thousandth of the length at most.
    static constexpr std::size_t most_places = 4096;

    // At a sample that is not before the last one.
    void add(std::uint64_t sample, const Damage_Counts& counts);

    // Adds it to the stretches that `length` samples are cut into.
    void show(std::uint64_t length, std::vector<Damage_Counts>& stretches) const;

    static void show(std::uint64_t sample, const Damage_Counts& counts, std::uint64_t length,
                     std::vector<Damage_Counts>& stretches);

private:
    struct Place {
        std::uint64_t sample; // of the first damage
        Damage_Counts counts;
    };

    void widen();

    std::uint64_t m_width = 1; // places lie in different ones of so many samples each
    std::vector<Place> m_places;
};

} // namespace Pelgar::ORBE::view
