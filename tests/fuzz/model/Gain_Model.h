// Road model: the gain correction of one port, on the calibration that all runs of the model use.
#pragma once

#include "Road_Output.h"

#include <cstdint>
#include <string>

namespace Pelgar::ORBE::road_model {

enum class Band : std::uint8_t { ap, lfp };

class Gain_Model {
public:
    explicit Gain_Model(bool around_middle) : m_around_middle(around_middle) {}

    // The calibration as its file has it: 960 electrodes with eight factors for each band.
    static std::string calibration();

    // What a seed makes of a channel.
    static std::uint16_t code(Band band, unsigned seed, unsigned channel);
    static std::uint16_t bank(unsigned seed, unsigned channel);

    // From now on values are corrected, by codes and banks of this seed.
    void load(unsigned seed);

    // In place.
    void correct(Band band, Channels& values) const;

private:
    bool m_around_middle;
    bool m_is_loaded = false;
    unsigned m_seed = 0;
};

} // namespace Pelgar::ORBE::road_model
