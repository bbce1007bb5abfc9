#include "Probe_Frames.h"

namespace Pelgar::ORBE::road_model {

Probe_Frame read_frame(const std::uint8_t* bytes) {
    Probe_Frame frame;
    for (std::size_t row = 0; row < 5; ++row) {
        for (std::size_t lane = 0; lane < 7; ++lane) {
            const std::uint8_t* const word = bytes + 2 * (7 * row + lane);
            if (word[1] / 16U != lane + 1) {
                ++frame.wrong_tags;
            }
            frame.values[5 * lane + row] = static_cast<std::uint16_t>(word[0] + 256 * (word[1] % 4));
        }
    }
    return frame;
}

bool begins_super_frame(const std::uint8_t* super_frame) {
    return super_frame[1] / 8 % 2 == 1;
}

unsigned channel_of(unsigned adc, unsigned slot) {
    return 24 * (adc / 2) + adc % 2 + 2 * slot;
}

} // namespace Pelgar::ORBE::road_model
