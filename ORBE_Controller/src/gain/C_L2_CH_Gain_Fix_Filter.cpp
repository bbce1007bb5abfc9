#include "gain/C_L2_CH_Gain_Fix_Filter.h"

#include "common/Checked_Index.h"
#include "common/Console.h"
#include "common/Parse_Number.h"
#include "gain/Gain_Product.h"

#include <exception>
#include <fstream>
#include <string>
#include <utility>

namespace Pelgar::ORBE {

void C_L2_CH_Gain_Fix_Filter::publish_ap_ch_data(std::uint16_t (&values)[channel_count]) {
    const bool delivered = m_listener.deliver([&](auto& listener) {
        refresh(m_ap, m_ap_gain_factor, m_ap_gain_code);
        correct(values, m_ap);
        listener.publish_ap_ch_data(values);
    });
    if (!delivered) {
        console::out("C_L2_CH_Gain_Fix_Filter has no ap listener\n");
    }
}

void C_L2_CH_Gain_Fix_Filter::publish_lp_ch_data(std::uint16_t (&values)[channel_count]) {
    const bool delivered = m_listener.deliver([&](auto& listener) {
        refresh(m_lfp, m_lfp_gain_factor, m_lfp_gain_code);
        correct(values, m_lfp);
        listener.publish_lp_ch_data(values);
    });
    if (!delivered) {
        console::out("C_L2_CH_Gain_Fix_Filter has no lp listener\n");
    }
}

void C_L2_CH_Gain_Fix_Filter::burst_begins() {
    m_listener.begin_burst();
}

void C_L2_CH_Gain_Fix_Filter::burst_ends() {
    m_listener.end_burst();
}

void C_L2_CH_Gain_Fix_Filter::correct(std::uint16_t (&values)[channel_count], const Band& band) const {
    if (!band.gain_loaded) {
        return;
    }
    if (m_around_middle) {
        apply_signed_gain(values, band.factors.data());
    } else {
        apply_gain(values, band.factors.data());
    }
}

void C_L2_CH_Gain_Fix_Filter::refresh(Band& band, const Factor_Table& table, const Channel_Codes& codes) {
    if (band.generation == m_generation.load(std::memory_order_acquire)) {
        return;
    }
    const std::lock_guard lock(m_tables_mutex);
    if (m_gain_loaded) {
        for (std::size_t channel = 0; channel < channel_count; ++channel) {
            band.factors[channel] =
                checked_at(checked_at(table, codes[channel]), m_channel_electrode[channel]);
        }
    }
    band.gain_loaded = m_gain_loaded;
    band.generation = m_generation.load(std::memory_order_relaxed);
}

void C_L2_CH_Gain_Fix_Filter::changed() {
    m_generation.fetch_add(1, std::memory_order_release);
}

void C_L2_CH_Gain_Fix_Filter::set_channel_gain_codes(std::uint32_t channel, std::uint16_t ap_code,
                                                     std::uint16_t lfp_code) {
    const std::lock_guard lock(m_tables_mutex);
    checked_at(m_ap_gain_code, channel) = ap_code;
    checked_at(m_lfp_gain_code, channel) = lfp_code;
    changed();
}

void C_L2_CH_Gain_Fix_Filter::set_channel_bank(std::uint32_t channel, std::uint16_t bank) {
    const std::lock_guard lock(m_tables_mutex);
    checked_at(m_channel_electrode, channel) = static_cast<std::uint16_t>(bank * channel_count + channel);
    changed();
}

bool C_L2_CH_Gain_Fix_Filter::load_gain_calibration(const char* path) {
    console::out("Loading gain data from file : ", path, "\n");
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        console::err("file open error\n");
        return false;
    }
    // The file is read into copies, so that the publishing thread never waits for the disk or the console.
    // Nothing but a load changes the factors, and loads take turns.
    const std::lock_guard load_lock(m_load_mutex);
    auto ap_gain_factor = std::make_unique<Factor_Table>(m_ap_gain_factor);
    auto lfp_gain_factor = std::make_unique<Factor_Table>(m_lfp_gain_factor);
    bool complete = false;
    try {
        read_factors(file, *ap_gain_factor, *lfp_gain_factor);
        console::out(
            "Gain data loaded.\nCreating default 1:1 mapping for the shank pixels ( Bank A Selection )\n");
        complete = true;
    } catch (const std::exception& exception) {
        console::err("Exception caught while loading gain data : ", exception.what());
    }

    const std::lock_guard lock(m_tables_mutex);
    m_ap_gain_factor = *ap_gain_factor;
    m_lfp_gain_factor = *lfp_gain_factor;
    if (complete) {
        for (std::size_t channel = 0; channel < channel_count; ++channel) {
            m_channel_electrode[channel] = static_cast<std::uint16_t>(channel);
        }
        m_gain_loaded = true;
    }
    changed();
    return complete;
}

// Fields are taken verbatim up to their delimiters: a comma, or the line end after the last one. Of a line
// end of two characters the first stays behind in the last field, where the conversion ignores it.
void C_L2_CH_Gain_Fix_Filter::read_factors(std::istream& file, Factor_Table& ap_gain_factor,
                                           Factor_Table& lfp_gain_factor) {
    file.exceptions(std::ios::badbit | std::ios::failbit | std::ios::eofbit);
    std::string field;
    file >> field;
    file.ignore(1);
    for (std::size_t electrode = 0; electrode < electrode_count; ++electrode) {
        std::getline(file, field, ',');
        for (std::size_t k = 0; k < 2 * gain_code_count; ++k) {
            std::getline(file, field, k + 1 < 2 * gain_code_count ? ',' : '\n');
            const float factor = parse_float(field);
            if (k < gain_code_count) {
                ap_gain_factor[k][electrode] = factor;
            } else {
                lfp_gain_factor[k - gain_code_count][electrode] = factor;
            }
        }
    }
}

void C_L2_CH_Gain_Fix_Filter::set_listener(std::weak_ptr<demux::I_L2_Demux_CH_Results> listener) {
    m_listener.set(std::move(listener));
}

std::shared_ptr<demux::I_L2_Demux_CH_Results> C_L2_CH_Gain_Fix_Filter::get_listener() const {
    return m_listener.lock();
}

} // namespace Pelgar::ORBE
