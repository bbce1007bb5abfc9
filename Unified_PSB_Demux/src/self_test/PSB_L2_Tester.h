// Layer: demultiplexer, self tests. Compares the AP band of one port with the pattern that a probe in digital
// test mode sends. Publishing runs on the port's NP worker thread, the counts are for any thread; never
// blocks.
#pragma once

#include "common/Export.h"
#include "common/Relaxed.h"
#include "probe/I_L2_Demux_CH_Results.h"

#include <cstdint>

namespace Pelgar::ORBE {

class ORBE_EXPORT PSB_L2_Tester : public demux::I_L2_Demux_CH_Results {
public:
    static constexpr std::uint16_t even_channel_pattern = 0x155;
    static constexpr std::uint16_t odd_channel_pattern = 0x2AA;

    // Counts one success or one failure; the first channel that differs is printed to standard error.
    void publish_ap_ch_data(std::uint16_t (&values)[demux::channel_count]) override;

    // The LFP band is not looked at.
    void publish_lp_ch_data(std::uint16_t (&values)[demux::channel_count]) override;

    std::uint32_t successful_comparison_count() const { return m_successful_comparison_count; }

    std::uint32_t failed_comparison_count() const { return m_failed_comparison_count; }

    // Whether the last comparison succeeded, and whether all of them did; true before the first one.
    bool last_comparison_succeeded() const { return m_last_comparison_succeeded; }

    bool all_comparisons_succeeded() const { return m_all_comparisons_succeeded; }

private:
    Relaxed<std::uint32_t> m_successful_comparison_count{0};
    Relaxed<std::uint32_t> m_failed_comparison_count{0};
    Relaxed<bool> m_last_comparison_succeeded{true};
    Relaxed<bool> m_all_comparisons_succeeded{true};
};

} // namespace Pelgar::ORBE
