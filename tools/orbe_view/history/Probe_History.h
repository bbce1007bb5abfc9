// Program orbe-view, history. What a probe has sent lately, in both bands, and how its channels are. Filled
// on the thread of the stream, read on the thread that makes pictures. Both wait for each other: who reads
// much reads it in parts, so that the stream waits for a fraction of a millisecond.
#pragma once

#include "description/Recording_Description.h"
#include "history/Channel_Statistics.h"
#include "history/Fair_Mutex.h"
#include "history/Loss_Count.h"
#include "history/Stream_History.h"

#include <NeuropixAPI.h>

#include <array>
#include <bitset>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <span>
#include <vector>

namespace Pelgar::ORBE::view {

// Of a probe's converters: 1.2 V in 1024 steps.
inline constexpr double microvolts_of_count = 1.2e6 / 1024;

enum class Band { ap, lfp };

class Probe_History {
public:
    // A spike is a fall below the channel's mean by so many microvolts. Of a recording that holds only some
    // channels these are `channels`; none: all are there.
    Probe_History(const recorder::Probe_Description& description, double spike_microvolts,
                  const std::vector<int>& channels = {});

    const recorder::Probe_Description& description() const { return m_description; }

    bool has(std::size_t channel) const { return m_channels.test(channel); }

    // Microvolts a count.
    float scale(Band band, std::size_t channel) const;

    // The packets of one batch, with the number of each of their AP samples.
    struct Packet {
        const Neuropixels::electrodePacket* packet;
        std::array<std::uint64_t, NP1_PROBE_SUPERFRAMESIZE> numbers;
    };

    void append(std::span<const Packet> packets);
    // Rows of one band that follow each other from number `first` on, each with a value for every channel.
    void append(Band band, std::uint64_t first, std::span<const std::int16_t> rows);
    // So many of them are lost.
    void append_lost(Band band, std::uint64_t first, std::uint64_t count);
    // What comes next is of another time.
    void clear();
    // And its numbers are those of other samples.
    void begin_anew();

    // ---- What the reader sees of both, while it holds the object.

    class Reading {
    public:
        explicit Reading(const Probe_History& history) : m_history(history), m_lock(history.m_mutex) {}

        // AP samples count 30 kHz, LFP samples 2.5 kHz.
        const Stream_History& band(Band band) const {
            return band == Band::ap ? m_history.m_ap : m_history.m_lfp;
        }

        const Channel_Statistics& statistics() const { return m_history.m_statistics; }

        std::uint64_t samples() const { return m_history.m_samples; }

        // As often as they were passed; and each once, however often a jump led there.
        std::uint64_t lost_samples() const { return m_history.m_losses.passed(); }

        std::uint64_t different_lost_samples() const { return m_history.m_losses.different(); }

    private:
        const Probe_History& m_history;
        std::unique_lock<Fair_Mutex> m_lock;
    };

private:
    void add_ap(std::uint64_t number, std::span<const std::int16_t> values);

    recorder::Probe_Description m_description;
    std::bitset<recorder::channel_count> m_channels;
    mutable Fair_Mutex m_mutex;
    Stream_History m_ap;
    Stream_History m_lfp;
    Channel_Statistics m_statistics;
    std::uint64_t m_samples = 0; // since the beginning, whatever was cleared
    Loss_Count m_losses;         // as these
};

} // namespace Pelgar::ORBE::view
