// Road model: the electrode packets of the host mode, of one port: twelve samples with their own stamps, from
// the first on that begins an LFP sample.
#pragma once

#include "Road_Output.h"
#include "Sample_Numbers.h"
#include "Sync_Model.h"

#include <array>
#include <cstdint>
#include <deque>

namespace Pelgar::ORBE::road_model {

class Host_Packets {
public:
    // ---- What the host does.

    void begin_streaming(std::uint32_t streaming) { m_wanted_streaming = streaming; }

    void begin_run();
    void end_run();

    // Everything that waits, with the sync level as it is known now.
    std::deque<Probe_Packet> take(const Sync_Model& sync);

    // ---- What comes from the port.

    // The number of a super frame since the probe began to count.
    void begin_sample(std::uint64_t super_frame);

    void take_ap(const Channels& values);
    void take_lfp(const Channels& values);

private:
    struct Waiting {
        Probe_Packet packet;
        std::array<std::uint64_t, packet_rows> samples{};
        std::uint32_t streaming = 0;
    };

    std::deque<Waiting> m_queue;
    Waiting m_next;
    std::size_t m_rows = 0;
    bool m_is_running = false;
    bool m_waits_for_lfp = false; // the run has not begun yet, for want of a sample that begins an LFP sample
    std::uint32_t m_wanted_streaming = 0;
    Sample_Numbers m_numbers;
    std::uint64_t m_super_frame = 0;
    std::uint64_t m_sample = 0;
};

} // namespace Pelgar::ORBE::road_model
