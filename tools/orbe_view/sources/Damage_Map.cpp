#include "sources/Damage_Map.h"

#include <algorithm>

namespace Pelgar::ORBE::view {

void Damage_Map::add(std::uint64_t sample, const Damage_Counts& counts) {
    if (counts.all() == 0) {
        return;
    }
    if (!m_places.empty() && m_places.back().sample / m_width == sample / m_width) {
        m_places.back().counts += counts;
        return;
    }
    m_places.push_back({sample, counts});
    while (m_places.size() > most_places) {
        widen();
    }
}

void Damage_Map::widen() {
    m_width *= 2;
    std::vector<Place> places;
    for (const Place& place : m_places) {
        if (!places.empty() && places.back().sample / m_width == place.sample / m_width) {
            places.back().counts += place.counts;
        } else {
            places.push_back(place);
        }
    }
    m_places = std::move(places);
}

void Damage_Map::show(std::uint64_t length, std::vector<Damage_Counts>& stretches) const {
    for (const Place& place : m_places) {
        show(place.sample, place.counts, length, stretches);
    }
}

void Damage_Map::show(std::uint64_t sample, const Damage_Counts& counts, std::uint64_t length,
                      std::vector<Damage_Counts>& stretches) {
    if (length == 0 || stretches.empty()) {
        return;
    }
    const double part = static_cast<double>(sample) / static_cast<double>(length);
    const auto stretch = static_cast<std::size_t>(part * static_cast<double>(stretches.size()));
    stretches[std::min(stretch, stretches.size() - 1)] += counts;
}

} // namespace Pelgar::ORBE::view
