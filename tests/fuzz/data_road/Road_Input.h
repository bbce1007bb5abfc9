// Fuzzing: reads an input as a road that is set up in some way, and as what happens on it.
#pragma once

#include "Byte_Reader.h"
#include "Road_Settings.h"
#include "Stream_Maker.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace Pelgar::ORBE::test {

enum class Happening : std::uint8_t {
    transfer, // the pump brings `bytes`
    work,     // the threads whose bits are set in `number` get their turn: the ports' and, in bit 4, RHD's
    resync,   // the streams start anew
    forget,   // a run has ended: what is unfinished goes
    gains,    // the gains and banks of all channels change, by a seed
    read,     // the host reads everything there is
    restart,  // host mode: stopped and started again, so that samples count from 0
    pause,    // host mode: the host stops taking, or takes again
};

struct Road_Event {
    Happening happening;
    Bytes bytes;
    unsigned number = 0;
};

class Road_Input {
public:
    Road_Input(const std::uint8_t* data, std::size_t size);

    const road_model::Road_Settings& settings() const { return m_settings; }

    // The next thing that happens; none when the input is at its end. At its end everything gets its turn.
    std::optional<Road_Event> next();

private:
    void read_settings();
    std::optional<Road_Event> take_step();
    Road_Event transfer();
    void make_whole_block(unsigned port);

    Byte_Reader m_input;
    road_model::Road_Settings m_settings;
    bool m_works_by_itself = true; // after every transfer
    std::optional<Stream_Maker> m_stream;
    std::vector<Road_Event> m_due; // last one first
    std::size_t m_bytes_made = 0;
    unsigned m_whole_blocks = 0;
    bool m_is_at_end = false;
};

} // namespace Pelgar::ORBE::test
