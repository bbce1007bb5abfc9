// Road model: how the road is set up for one run of the model. Plain data; nothing here, or anywhere in this
// folder, comes from the library.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace Pelgar::ORBE::road_model {

inline constexpr unsigned port_count = 4;
inline constexpr std::size_t channel_count = 384;
// Packets that a port's queue holds in host mode, as the runs of the model have it.
inline constexpr std::size_t host_queue_length = 24;

// Who is there behind a port's frames.
enum class Listening : std::uint8_t { everything, no_converter, nobody };

// Where the sync level comes from in host mode.
struct Sync_Wiring {
    std::uint32_t inputs = 0;       // TTL inputs in bits 8 to 15, comparators in bits 16 to 27
    std::uint64_t clock_period = 0; // samples; 0: no clock
};

struct Road_Settings {
    bool host_mode = false;
    unsigned rhd_streams = 0;
    unsigned block_super_frames = 1792;
    std::size_t most_transfers = 1024;
    std::size_t most_blocks = 128;
    std::array<Listening, port_count> ports{};
    bool adc_listening = true;
    bool gain_loaded = false;
    unsigned gain_seed = 0;
    Sync_Wiring sync;
    std::size_t adc_row_length = 24;
};

} // namespace Pelgar::ORBE::road_model
