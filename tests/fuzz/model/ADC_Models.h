// Road model: the packets of the ADC inputs, in the box's own way and in host mode.
#pragma once

#include "RHD_Model.h"
#include "Road_Output.h"
#include "Sample_Numbers.h"
#include "Sync_Model.h"

#include <cstddef>
#include <cstdint>
#include <deque>

namespace Pelgar::ORBE::road_model {

class Own_ADC {
public:
    Own_ADC(Process_Counters& process, Told& told) : m_process(process), m_told(told) {}

    void take(const RHD_Frame_Words& frame);

    std::deque<ADC_Packet> queue;

private:
    Process_Counters& m_process;
    Told& m_told;
};

class Host_ADC {
public:
    Host_ADC(Sync_Model& sync, std::size_t row_length) : m_sync(sync), m_row_length(row_length) {}

    // ---- What the host does.

    void begin_streaming(std::uint32_t streaming) { m_wanted_streaming = streaming; }

    void begin_run();
    void end_run();

    // ---- What comes from the box.

    void take(const RHD_Frame_Words& frame);

    std::deque<ADC_Packet> queue;

private:
    Sync_Model& m_sync;
    std::size_t m_row_length;
    bool m_is_running = false;
    std::uint32_t m_wanted_streaming = 0;
    std::uint32_t m_streaming = 0;
    Sample_Numbers m_numbers;
    std::uint32_t m_last_stamp = 0;
    std::uint32_t m_comparators = 0;
};

} // namespace Pelgar::ORBE::road_model
