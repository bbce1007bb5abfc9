// Road model: what a host must get, and what must be printed and logged, when the box sends these transfers.
// Worked out from the formats, one row, word and frame after the other, without regard to how the library
// does it, and without anything of the library's.
#pragma once

#include "ADC_Models.h"
#include "Host_Probe.h"
#include "Own_Probe.h"
#include "RHD_Model.h"
#include "Road_Output.h"
#include "Road_Settings.h"
#include "Row_Model.h"
#include "Sync_Model.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <vector>

namespace Pelgar::ORBE::road_model {

class Road_Model {
public:
    // `streaming` is the first time of streaming's number.
    Road_Model(const Road_Settings& settings, Process_Counters& process, std::uint32_t streaming);

    // The pump brings a transfer.
    void push(const Bytes& transfer);

    // The threads of the road get their turn: the main one, those of the ports whose bits are set, and that
    // of RHD.
    void work_on_transfers();
    void work_on_port(unsigned port);
    void work_on_rhd();

    void resync();
    void forget();
    void set_gains(unsigned seed);

    // ---- Host mode.

    void begin_streaming(std::uint32_t streaming);
    void begin_run();
    void end_run();

    // Everything that the host can read.
    std::deque<Probe_Packet> take_packets(unsigned port);
    std::deque<ADC_Packet> take_adc_packets();

    const Told& told() const { return m_told; }

    std::size_t unread_rhd_words() const { return m_rhd.unread(); }

    std::uint32_t rhd_frames() const { return m_rhd.frames; }

    Damage damage(unsigned stream) const;

    std::uint64_t lost_bytes() const { return m_lost_bytes; }

    std::uint64_t lost_super_frames(unsigned port) const { return m_rows.lost_super_frames[port]; }

private:
    using Loss = std::array<std::uint32_t, port_count>;

    // A transfer, or what is missing in front of the next one.
    struct Queued {
        Bytes transfer;
        std::optional<Loss> loss;
    };

    void take_rhd_frame(const RHD_Frame_Words& frame);

    Road_Settings m_settings;
    Process_Counters& m_process;
    Told m_told;
    std::deque<Queued> m_queue;
    Queue_Rule m_rule;
    std::optional<Loss> m_loss;
    std::uint64_t m_lost_bytes = 0;
    bool m_has_begun = false;
    Sync_Model m_sync;
    Own_ADC m_own_adc;
    Host_ADC m_host_adc;
    RHD_Model m_rhd;
    Row_Model m_rows;
    std::vector<Own_Probe> m_own_probes;
    std::vector<Host_Probe> m_host_probes;
};

} // namespace Pelgar::ORBE::road_model
