// Tools, recording library. The frames of the RHD headstage: time stamp, amplifier words, eight ADC inputs
// with ramps (even inputs) and tones (odd inputs), and a TTL word whose bits change now and then. Runs on the
// generator's thread.
#pragma once

#include "stream_format/Wire_Format.h"

#include <vector>

namespace Pelgar::ORBE::recording {

class RHD_Generator {
public:
    // `streams` is the number of enabled data streams, 0..32.
    RHD_Generator(unsigned streams, std::uint64_t seed);

    // Appends the words of the next frame.
    void append(std::vector<std::uint16_t>& words);

    // What frame number `frame` carries.
    std::uint16_t adc_input(std::uint64_t frame, std::size_t input) const;
    std::uint32_t ttl_inputs(std::uint64_t frame) const;

    // The TTL inputs may change every so many frames.
    static constexpr std::uint64_t ttl_hold_frames = 600;

private:
    unsigned m_streams;
    std::uint64_t m_seed;
    std::uint64_t m_frame = 0;
};

} // namespace Pelgar::ORBE::recording
