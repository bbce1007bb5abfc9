#include "checker/RHD_Checker.h"

namespace Pelgar::ORBE::recording {

void RHD_Checker::look_at(Row_View row, std::uint64_t number) {
    m_counter.follows(row, number, m_findings);
    for (std::size_t i = 0; i < row_words; ++i) {
        take(row.word(i), i + 1 < rhd_magic_words ? m_last_row : number);
    }
    m_last_row = number;
}

void RHD_Checker::take(std::uint16_t word, std::uint64_t row) {
    m_last_words = (m_last_words >> 16) | static_cast<std::uint64_t>(word) << 48;
    ++m_words;
    if (m_last_words != rhd_magic || m_words < rhd_magic_words) {
        return;
    }
    const std::uint64_t start = m_words - rhd_magic_words;
    if (m_any_frame) {
        m_lengths[start - m_frame_start].note(m_frame_row);
    } else {
        m_findings.words_before = start;
    }
    m_any_frame = true;
    m_frame_start = start;
    m_frame_row = row;
}

RHD_Findings RHD_Checker::findings() const {
    RHD_Findings findings = m_findings;
    if (!m_any_frame) {
        // Without a single preamble every word stands before the first frame.
        findings.words_before = m_words;
        return findings;
    }
    findings.streams = usual_streams();
    const std::uint64_t usual = rhd_frame_words(findings.streams);
    for (const auto& [length, found] : m_lengths) {
        if (length < usual) {
            findings.cut_frames.add(found);
        } else {
            findings.frames += found.count();
        }
        if (length > usual) {
            findings.bad_preambles.add(found);
        }
    }
    // The last frame ends with the recording. Only words after its end show that something is wrong.
    const std::uint64_t last = m_words - m_frame_start;
    findings.frames += last >= usual ? 1U : 0U;
    if (last >= usual + rhd_magic_words) {
        findings.bad_preambles.note(m_frame_row);
    }
    return findings;
}

// The number of data streams whose frame length occurs most often.
std::size_t RHD_Checker::usual_streams() const {
    std::size_t usual = 0;
    std::uint64_t most = 0;
    for (std::size_t streams = 0; streams <= rhd_max_streams; ++streams) {
        const auto found = m_lengths.find(rhd_frame_words(streams));
        if (found != m_lengths.end() && found->second.count() > most) {
            most = found->second.count();
            usual = streams;
        }
    }
    return usual;
}

} // namespace Pelgar::ORBE::recording
