// Road model: transfers taken apart into rows, and the rows sorted into the blocks of the ports and the words
// of the RHD stream.
#pragma once

#include "Queue_Rule.h"
#include "RHD_Model.h"
#include "Road_Output.h"
#include "Road_Settings.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>

namespace Pelgar::ORBE::road_model {

struct Block {
    Bytes bytes;
    std::uint32_t lost_before = 0;
};

class Row_Model {
public:
    Row_Model(const Road_Settings& settings, Process_Counters& process, Told& told, RHD_Model& rhd);

    // At least a row.
    void take_transfer(const Bytes& transfer);

    // Transfers are missing in front of the next one; so many super frames of each port begin in them.
    void take_loss(const std::array<std::uint32_t, port_count>& super_frames);

    // A run has ended, and what does not fill a block goes with it.
    void forget();

    // What waits for each port's thread.
    std::array<std::deque<Block>, port_count> blocks;

    std::array<std::uint64_t, 16> row_gaps{};
    std::array<std::uint64_t, port_count> lost_super_frames{};

private:
    void take_row(const std::uint8_t* row);
    void take_port_row(unsigned port, const std::uint8_t* row);
    void hand_over(unsigned port);

    const Road_Settings& m_settings;
    Process_Counters& m_process;
    Told& m_told;
    RHD_Model& m_rhd;
    std::array<unsigned, 16> m_last_counter{};
    std::array<bool, 16> m_counter_is_unknown{};
    std::uint32_t m_row_index = 0;
    std::array<Block, port_count> m_filling;
    std::array<bool, port_count> m_is_behind_loss{};
    std::array<Queue_Rule, port_count> m_rules;
    std::vector<std::uint16_t> m_rhd_words; // of this transfer
};

} // namespace Pelgar::ORBE::road_model
