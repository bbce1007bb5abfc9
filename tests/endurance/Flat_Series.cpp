#include "Flat_Series.h"

#include <algorithm>

namespace Pelgar::ORBE::test {

namespace {

std::uint64_t highest_of(const std::vector<std::uint64_t>& values, std::size_t begin, std::size_t end) {
    const auto first = values.begin();
    return *std::max_element(first + static_cast<std::ptrdiff_t>(begin),
                             first + static_cast<std::ptrdiff_t>(end));
}

} // namespace

std::uint64_t Flat_Series::settled() const {
    return m_values.size() < fewest_values ? 0 : highest_of(m_values, 0, m_values.size() / 5);
}

std::uint64_t Flat_Series::highest() const {
    return m_values.size() < fewest_values ? 0 : highest_of(m_values, m_values.size() / 5, m_values.size());
}

std::string Flat_Series::fault() const {
    if (m_values.size() < fewest_values) {
        return m_name + " : " + std::to_string(m_values.size()) + " values are too few to judge";
    }
    if (highest() <= settled() + m_allowance) {
        return "";
    }
    return m_name + " : grew from " + std::to_string(settled()) + " to " + std::to_string(highest()) +
           ", by " + std::to_string(m_allowance) + " at most was allowed";
}

} // namespace Pelgar::ORBE::test
