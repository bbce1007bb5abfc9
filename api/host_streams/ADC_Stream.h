// Layer: façade, host mode. The box's RHD stream: makes the packets of the ADC inputs and keeps them until
// the host asks, and tells the probes' streams the level of the sync input. Published to on the RHD worker
// thread, read on the host's threads; nothing blocks.
#pragma once

#include "NeuropixAPI.h"
#include "host_streams/ADC_Inputs.h"
#include "host_streams/Drop_Report.h"
#include "host_streams/Packet_Ring.h"
#include "host_streams/Run_Gate.h"
#include "host_streams/Sample_Count.h"
#include "host_streams/Sync_Levels.h"
#include "host_streams/Sync_Source.h"
#include "rhd/I_RHD_Frame_Listener.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>

namespace Pelgar::ORBE::npoe_adapter {

class ADC_Stream final : public demux::I_RHD_Frame_Listener {
public:
    // 2.05 s.
    static constexpr std::size_t capacity = 61'440;

    // What is passed must outlive the stream.
    ADC_Stream(ADC_Inputs& inputs, const Sync_Source& sync_source, Sync_Levels& sync_levels);

    // The RHD worker thread.
    void publish_rhd_frame(demux::RHD_Frame& frame) override;

    // ---- The host's threads, as of an Electrode_Stream.

    void begin_streaming(std::uint32_t number) { m_streaming.store(number, std::memory_order_release); }

    void begin_run();
    void end_run();

    // Writes `row_length` samples a packet: the twelve inputs and, as far as they fit, the twelve
    // comparators. Either destination may be null.
    std::size_t take(Neuropixels::PacketInfo* infos, std::int16_t* rows, std::size_t row_length,
                     std::size_t most);

    std::size_t available() const { return m_ring.size(); }

private:
    struct Record {
        std::array<std::int16_t, demux::rhd_board_adc_count> samples;
        std::uint32_t comparators;
        std::uint32_t stamp;
        Run_Number run;
        bool sync;
    };

    std::uint64_t follow(std::uint32_t frame_stamp);

    ADC_Inputs& m_inputs;
    const Sync_Source& m_sync_source;
    Sync_Levels& m_sync_levels;
    Run_Gate m_gate;
    std::atomic<std::uint32_t> m_streaming{0};
    Packet_Ring<Record> m_ring{capacity};

    // Of the worker thread alone.
    std::uint32_t m_seen_streaming = 0;
    std::uint64_t m_counter = 0; // the frames' stamps, without their wraps
    Sample_Count m_count;
    Drop_Report m_drops{"ADC inputs"};
};

} // namespace Pelgar::ORBE::npoe_adapter
