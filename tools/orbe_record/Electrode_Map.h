// Program orbe-record. Which electrode each channel of each probe is connected to, as the user has chosen.
// Main thread; reading blocks on the disk.
#pragma once

#include "description/Recording_Description.h"

#include <array>
#include <cstddef>
#include <filesystem>

namespace Pelgar::ORBE::recorder {

class Electrode_Map {
public:
    static constexpr int port_count = 4;
    static constexpr int bank_count = 3;
    static constexpr int electrode_count = 960;
    static constexpr int disconnected = -1;
    // The probe keeps it for its internal reference.
    static constexpr int reference_channel = 191;

    // All channels of all probes on one bank (0..2). The last bank is half as long: behind channel 191 the
    // channels go to the bank before, so that the electrodes are the last 384 of the shank.
    static Electrode_Map of_bank(int bank);

    // From a CSV file: a line "channel,electrode", or "port,channel,electrode" where the probes differ, and
    // below it a line a channel. The electrode is the channel's number in bank 0, 384 more in bank 1 or 768
    // more in bank 2; -1 disconnects. Channels that are not named are on bank 0. Empty lines and those that
    // begin with "#" are skipped. Throws std::invalid_argument with file, line and reason.
    static Electrode_Map of_file(const std::filesystem::path& file);

    // Port 1..4, channel 0..383.
    int electrode(int port, int channel) const;

private:
    std::array<std::array<int, channel_count>, port_count> m_electrodes{};
};

} // namespace Pelgar::ORBE::recorder
