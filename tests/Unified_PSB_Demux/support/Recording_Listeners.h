// Test support: listeners of all stages that keep what they are given.
#pragma once

#include "probe/I_L1_Demux_ADC_Results.h"
#include "probe/I_L2_Demux_CH_Results.h"
#include "rhd/I_RHD_Frame_Listener.h"

#include <algorithm>
#include <array>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <vector>

namespace Pelgar::ORBE::test {

using Adc_Frame = std::array<std::uint16_t, demux::adc_frame_length>;
using Channel_Values = std::array<std::uint16_t, demux::channel_count>;

class Recording_L1_Stage : public demux::I_L1_Demux_ADC_Results {
public:
    void publish_adc_data(const std::uint16_t (&adc)[demux::adc_frame_length]) override {
        std::copy(std::begin(adc), std::end(adc), frames.emplace_back().begin());
    }

    void reset_and_resync_counters() override { ++resync_count; }

    void skip_super_frames(std::uint32_t count) override { skips.push_back({frames.size(), count}); }

    struct Skip {
        std::size_t behind_frames;
        std::uint32_t super_frames;

        bool operator==(const Skip&) const = default;
    };

    std::vector<Adc_Frame> frames;
    std::vector<Skip> skips;
    int resync_count = 0;
};

enum class Band { AP, LFP };

struct Channel_Set {
    Band band;
    Channel_Values values;

    bool operator==(const Channel_Set&) const = default;
};

class Recording_L2_Listener : public demux::I_L2_Demux_CH_Results {
public:
    void publish_ap_ch_data(std::uint16_t (&values)[demux::channel_count]) override {
        record(Band::AP, values);
    }

    void publish_lp_ch_data(std::uint16_t (&values)[demux::channel_count]) override {
        record(Band::LFP, values);
    }

    std::size_t count(Band band) const {
        return static_cast<std::size_t>(std::count_if(
            sets.begin(), sets.end(), [&](const Channel_Set& set) { return set.band == band; }));
    }

    std::vector<Channel_Set> sets;

private:
    void record(Band band, const std::uint16_t (&values)[demux::channel_count]) {
        Channel_Set& set = sets.emplace_back();
        set.band = band;
        std::copy(std::begin(values), std::end(values), set.values.begin());
    }
};

// An RHD frame with its arrays by value.
struct Rhd_Frame_Copy {
    std::uint64_t preamble = 0;
    std::uint32_t timestamp = 0;
    std::vector<std::optional<std::array<std::uint16_t, demux::rhd_words_per_stream>>> amplifier_data;
    std::array<std::uint16_t, demux::rhd_board_adc_count> board_adc_data{};
    std::uint32_t ttl_in = 0;
    std::uint32_t ttl_out = 0;

    bool operator==(const Rhd_Frame_Copy&) const = default;
};

inline Rhd_Frame_Copy copy_of(const demux::RHD_Frame& frame) {
    Rhd_Frame_Copy copy;
    copy.preamble = frame.preamble;
    copy.timestamp = frame.timestamp;
    for (const auto& samples : frame.amplifier_data) {
        auto& entry = copy.amplifier_data.emplace_back();
        if (samples) {
            entry = *samples;
        }
    }
    copy.board_adc_data = frame.board_adc_data;
    copy.ttl_in = frame.ttl_in;
    copy.ttl_out = frame.ttl_out;
    return copy;
}

class Recording_Rhd_Listener : public demux::I_RHD_Frame_Listener {
public:
    // Called after each frame was kept, with the number of frames so far.
    std::function<void(std::size_t)> on_frame;

    void publish_rhd_frame(demux::RHD_Frame& frame) override {
        std::size_t count = 0;
        {
            const std::lock_guard lock(m_mutex);
            m_frames.push_back(copy_of(frame));
            count = m_frames.size();
        }
        m_changed.notify_all();
        if (on_frame) {
            on_frame(count);
        }
    }

    void wait_for_frames(std::size_t count) {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [&] { return m_frames.size() >= count; });
    }

    std::vector<Rhd_Frame_Copy> frames() const {
        const std::lock_guard lock(m_mutex);
        return m_frames;
    }

private:
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<Rhd_Frame_Copy> m_frames;
};

} // namespace Pelgar::ORBE::test
