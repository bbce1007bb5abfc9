// Layer: façade, host mode. One probe port: makes electrode packets of twelve whole samples, with signed
// values and running stamps, and keeps them until the host asks. Published to on the port's NP worker thread,
// read on the host's threads; nothing blocks.
#pragma once

#include "NeuropixAPI.h"
#include "host_streams/Drop_Report.h"
#include "host_streams/Packet_Ring.h"
#include "host_streams/Run_Gate.h"
#include "host_streams/Sample_Count.h"
#include "host_streams/Sync_Levels.h"
#include "host_streams/Sync_Source.h"
#include "probe/I_L2_Demux_CH_Results.h"
#include "probe/I_Sample_Listener.h"

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>

namespace Pelgar::ORBE::npoe_adapter {

class Electrode_Stream final : public demux::I_L2_Demux_CH_Results, public demux::I_Sample_Listener {
public:
    // 2.05 s.
    static constexpr std::size_t capacity = 5120;

    // How long a packet waits for the sync input's level at its samples, which comes with another stream.
    static constexpr std::chrono::milliseconds sync_patience{20};

    // `number` is the API's, 1..4. What is passed must outlive the stream. Who knows by itself when the level
    // has come passes a `patience` of 0, and who never lets packets wait for long a shorter queue.
    Electrode_Stream(int number, const Sync_Source& sync_source, const Sync_Levels& sync_levels,
                     std::chrono::nanoseconds patience = sync_patience, std::size_t queue_length = capacity);

    // ---- The port's NP worker thread.

    void begin_sample(const demux::Sample_Position& position) override;

    // A packet begins with the first of the samples that share an LFP sample, and after lost ones with
    // whatever comes: it has twelve samples that did come, each with its own stamp.
    void publish_ap_ch_data(std::uint16_t (&values)[demux::channel_count]) override;
    void publish_lp_ch_data(std::uint16_t (&values)[demux::channel_count]) override;

    // ---- The host's threads.

    // From now on samples are counted from 0, for the time of streaming with this number. While no data
    // comes.
    void begin_streaming(std::uint32_t number) { m_streaming.store(number, std::memory_order_release); }

    // Packets are made from the next whole one on. What was queued before is gone.
    void begin_run();
    void end_run();

    // Copies packets to the host, which may be null, up to `most`, and returns their number. Never waits.
    std::size_t take(Neuropixels::electrodePacket* packets, std::size_t most);

    std::size_t available() const { return m_ring.size(); }

private:
    struct Record {
        Neuropixels::electrodePacket packet;
        std::uint64_t samples[NP1_PROBE_SUPERFRAMESIZE];
        std::uint32_t streaming;
        Run_Number run;
        std::int64_t made_at; // of the steady clock, in ns
    };

    void finish_packet();
    bool is_settled(const Record& record) const;
    void set_sync(const Record& record, Neuropixels::electrodePacket& packet) const;

    const Sync_Source& m_sync_source;
    const Sync_Levels& m_sync_levels;
    const std::int64_t m_patience; // ns
    Run_Gate m_gate;
    std::atomic<std::uint32_t> m_streaming{0};
    Packet_Ring<Record> m_ring;

    // Of the worker thread alone.
    Record m_record{};
    std::size_t m_rows = 0;
    std::uint64_t m_sample = 0;
    bool m_begins_lfp_sample = false;
    Sample_Count m_count;
    Drop_Report m_drops;
};

} // namespace Pelgar::ORBE::npoe_adapter
