#include "self_test/PSB_L2_Tester.h"

#include "common/Console.h"

#include <cstddef>

namespace Pelgar::ORBE {

void PSB_L2_Tester::publish_ap_ch_data(std::uint16_t (&values)[demux::channel_count]) {
    for (std::size_t channel = 0; channel < demux::channel_count; ++channel) {
        const std::uint16_t expected = channel % 2 == 0 ? even_channel_pattern : odd_channel_pattern;
        if (values[channel] != expected) {
            console::err("PSB test ch_data compare failed at : ", channel, '\n');
            m_last_comparison_succeeded = false;
            m_all_comparisons_succeeded = false;
            m_failed_comparison_count.fetch_add(1);
            return;
        }
    }
    m_last_comparison_succeeded = true;
    m_successful_comparison_count.fetch_add(1);
}

void PSB_L2_Tester::publish_lp_ch_data(std::uint16_t (&)[demux::channel_count]) {}

} // namespace Pelgar::ORBE
