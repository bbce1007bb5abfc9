#include "streaming/Recording_Pace.h"

#include "common/Waiting.h"
#include "wire/Mux_Row_Format.h"

#include <algorithm>
#include <cstddef>

namespace Pelgar::ORBE {

namespace {

using namespace demux;

constexpr std::uint64_t samples_per_second = 30'000;
// Where there is no probe: of a frame without amplifier data, as acquisition from this API has them.
constexpr std::uint64_t words_per_rhd_frame = 20;
// What a recording may be late before time is set back, so that a stall is not followed by a rush.
constexpr auto longest_delay = std::chrono::milliseconds(500);

} // namespace

void Recording_Pace::wait_until_due(std::span<const std::uint8_t> piece) {
    const auto now = planning_time();
    if (!m_start) {
        m_start = now;
    }
    count_samples(piece);
    // Of a port that loses rows or stops the others tell.
    const std::uint64_t most = *std::max_element(m_samples.begin(), m_samples.end());
    const std::uint64_t samples = most > 0 ? most : m_rhd_words / words_per_rhd_frame;
    const auto due = *m_start + std::chrono::nanoseconds(samples * 1'000'000'000 / samples_per_second);
    if (now - due > longest_delay) {
        *m_start += now - due;
        return;
    }
    for (auto left = due - now; left.count() > 0; left = due - planning_time()) {
        wait_for(std::chrono::ceil<std::chrono::milliseconds>(left));
    }
}

void Recording_Pace::count_samples(std::span<const std::uint8_t> piece) {
    for (std::size_t at = 0; at + mux_row::length <= piece.size(); at += mux_row::length) {
        const std::uint8_t* const row = piece.data() + at;
        const unsigned stream_id = row[mux_row::marker_offset] & mux_row::stream_id_mask;
        if (stream_id == mux_row::rhd_stream_id) {
            m_rhd_words += mux_row::payload_words;
        } else if (stream_id < m_samples.size() &&
                   (row[mux_row::start_flag_offset] & mux_row::start_flag) != 0) {
            ++m_samples[stream_id];
        }
    }
}

} // namespace Pelgar::ORBE
