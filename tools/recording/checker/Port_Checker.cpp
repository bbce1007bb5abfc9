#include "checker/Port_Checker.h"

namespace Pelgar::ORBE::recording {

namespace {

// The lane that carries the frame counter, and the rows of its halves.
constexpr std::size_t counter_lane = counter_high_index / rows_per_frame;
constexpr std::size_t counter_high_row = counter_high_index % rows_per_frame;
constexpr std::size_t counter_low_row = counter_low_index % rows_per_frame;

} // namespace

void Port_Checker::look_at(Row_View row, std::uint64_t number) {
    const bool continuous = m_counter.follows(row, number, m_findings);
    check_tags(row, number);
    if (!find_place(row, number, continuous)) {
        m_findings.discarded_rows.note(number);
        return;
    }
    check_frame_counter(row, number);
    if (++m_row == rows_per_super_frame) {
        m_row = 0;
        ++m_findings.super_frames;
    }
}

// Whether the row is part of a super frame; `m_row` is then its place there.
bool Port_Checker::find_place(Row_View row, std::uint64_t number, bool continuous) {
    const bool inside = m_in_step && m_row != 0;
    if (row.starts_super_frame()) {
        if (inside) {
            m_findings.broken_super_frames.note(number);
        }
        m_in_step = true;
        m_row = 0;
        return true;
    }
    if (inside && continuous) {
        return true;
    }
    if (inside) {
        // Rows are missing: what is left of this super frame cannot be placed.
        m_findings.broken_super_frames.note(number);
    } else if (m_in_step && continuous) {
        m_findings.missing_flags.note(number);
    }
    m_in_step = false;
    m_row = 0;
    return false;
}

void Port_Checker::check_tags(Row_View row, std::uint64_t number) {
    for (std::size_t lane = 0; lane < row_words; ++lane) {
        const auto tag = static_cast<std::uint16_t>((lane + 1) << lane_tag_shift);
        if ((row.word(lane) & lane_tag_mask) != tag) {
            m_findings.wrong_tags.note(number);
        }
    }
}

void Port_Checker::check_frame_counter(Row_View row, std::uint64_t number) {
    const std::size_t row_in_frame = m_row % rows_per_frame;
    if (row_in_frame == counter_high_row) {
        m_counter_high = row.word(counter_lane) & sample_mask;
    } else if (row_in_frame == counter_low_row) {
        const std::uint32_t low = row.word(counter_lane) & sample_mask;
        const std::uint32_t counter = (m_counter_high << counter_half_bits) | low;
        if (m_any_frame && counter != m_next_frame) {
            m_findings.frame_counter_gaps.note(number);
        }
        m_any_frame = true;
        m_next_frame = (counter + 1) & counter_mask;
    }
}

} // namespace Pelgar::ORBE::recording
