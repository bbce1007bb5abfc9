// Tools, recording library. One kind of damage: how often it was found, and in which rows first.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace Pelgar::ORBE::recording {

class Finding {
public:
    static constexpr std::size_t most_places = 3;

    // Found once more, in the same row as before or in a later one. Rows are counted from 0 over the whole
    // file.
    void note(std::uint64_t row) {
        ++m_count;
        if (m_places == 0 || (m_places < most_places && m_rows[m_places - 1] != row)) {
            m_rows[m_places++] = row;
        }
    }

    // Adds what was found in other rows.
    void add(const Finding& other) {
        std::array<std::uint64_t, 2 * most_places> all{};
        const auto end = std::ranges::merge(first_rows(), other.first_rows(), all.begin()).out;
        m_places = std::min<std::size_t>(most_places, static_cast<std::size_t>(end - all.begin()));
        std::copy_n(all.begin(), m_places, m_rows.begin());
        m_count += other.m_count;
    }

    std::uint64_t count() const { return m_count; }

    // The first of the rows, ascending.
    std::span<const std::uint64_t> first_rows() const { return std::span(m_rows).first(m_places); }

private:
    std::uint64_t m_count = 0;
    std::array<std::uint64_t, most_places> m_rows{};
    std::size_t m_places = 0;
};

} // namespace Pelgar::ORBE::recording
