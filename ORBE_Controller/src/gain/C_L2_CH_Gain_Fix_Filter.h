// Layer: device controller. Corrects channel values by the measured gain of the electrode that each channel
// is connected to, on the way from the demultiplexer to the consumer. The publish operations run on the NP
// worker thread of the port, everything else on the host's threads. Publishing allocates nothing and takes no
// lock on the tables unless a setter has changed something since the block before.
#pragma once

#include "common/Export.h"
#include "common/Listener_Slot.h"
#include "common/Relaxed.h"
#include "probe/I_L2_Demux_CH_Results.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <memory>
#include <mutex>

namespace Pelgar::ORBE {

class ORBE_EXPORT C_L2_CH_Gain_Fix_Filter : public demux::I_L2_Demux_CH_Results {
public:
    static constexpr std::size_t gain_code_count = 8;
    static constexpr std::size_t electrode_count = 960;
    static constexpr std::size_t channel_count = demux::channel_count;

    // Multiplies each of the 384 values in place, when a calibration is loaded, and passes the block on.
    // Without a live listener the block is dropped with a message. Throws std::out_of_range("invalid array<T,
    // N> subscript") when a channel's gain code or electrode lies outside the calibration.
    void publish_ap_ch_data(std::uint16_t (&values)[channel_count]) override;
    void publish_lp_ch_data(std::uint16_t (&values)[channel_count]) override;

    // In a burst the listener is looked up once, and told of it.
    void burst_begins() override;
    void burst_ends() override;

    // Gain codes 0..7 of a channel below 384; another channel throws std::out_of_range.
    void set_channel_gain_codes(std::uint32_t channel, std::uint16_t ap_code, std::uint16_t lfp_code);

    // Connects a channel (below 960, else std::out_of_range) to electrode bank * 384 + channel.
    void set_channel_bank(std::uint32_t channel, std::uint16_t bank);

    // Reads a probe's gain calibration (CSV: a header word, then 960 lines of electrode number, eight AP and
    // eight LFP factors) and puts every channel on bank 0. Returns false, with the reason on standard error,
    // when the file cannot be opened or does not hold all that; factors read before a failure stay in force.
    bool load_gain_calibration(const char* path);

    // From now on corrects the distance from the middle of the ten bits, for a consumer to whom that is no
    // voltage, instead of the value.
    void correct_around_middle() { m_around_middle = true; }

    // Where corrected blocks go. Held weakly.
    void set_listener(std::weak_ptr<demux::I_L2_Demux_CH_Results> listener);
    // The live listener, or empty.
    std::shared_ptr<demux::I_L2_Demux_CH_Results> get_listener() const;

private:
    using Factor_Table = std::array<std::array<float, electrode_count>, gain_code_count>;
    using Channel_Codes = std::array<std::uint16_t, channel_count>;
    using Channel_Factors = std::array<float, channel_count>;

    // One band's factor per channel, as the publishing thread last derived it from the tables.
    struct Band {
        Channel_Factors factors{};
        std::uint64_t generation = 0;
        bool gain_loaded = false;
    };

    void correct(std::uint16_t (&values)[channel_count], const Band& band) const;
    void refresh(Band& band, const Factor_Table& table, const Channel_Codes& codes);
    void changed();
    static void read_factors(std::istream& file, Factor_Table& ap_gain_factor, Factor_Table& lfp_gain_factor);

    bool m_gain_loaded = false;
    Factor_Table m_ap_gain_factor{};
    Factor_Table m_lfp_gain_factor{};
    std::array<std::uint16_t, electrode_count> m_channel_electrode{};
    Channel_Codes m_ap_gain_code{};
    Channel_Codes m_lfp_gain_code{};
    Listener_Slot<demux::I_L2_Demux_CH_Results> m_listener;

    Relaxed<bool> m_around_middle{false};

    // Held for the whole of a load, which takes its time over the file.
    std::mutex m_load_mutex;
    // Guards the tables above; the generation counts their changes, so that a block that finds it unchanged
    // needs no lock.
    std::mutex m_tables_mutex;
    std::atomic<std::uint64_t> m_generation{0};
    Band m_ap;
    Band m_lfp;
};

} // namespace Pelgar::ORBE
