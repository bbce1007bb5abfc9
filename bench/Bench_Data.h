// Benchmarks: the pieces of the full box's stream that single stages take, made once in memory.
#pragma once

#include "wire/Main_mux_transfer_buffer_wrapper.h"
#include "wire/NP_Block_Buffer.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace Pelgar::ORBE::bench {

struct Bench_Data {
    // The whole stream, cut into transfers; the last one is shorter.
    std::vector<std::unique_ptr<demux::Main_mux_transfer_buffer_wrapper>> transfers;
    std::size_t stream_bytes = 0;

    // What the row split makes of it: the blocks of the first port, and the words of the RHD stream.
    std::vector<std::unique_ptr<demux::NP_Block_Buffer>> np_blocks;
    std::size_t np_stream_bytes = 0; // rows of one port
    std::vector<std::uint16_t> rhd_words;
    std::size_t rhd_stream_bytes = 0;
};

const Bench_Data& bench_data();

// A gain calibration with a factor of its own for every electrode and gain code, in the working directory.
const char* gain_calibration_path();

} // namespace Pelgar::ORBE::bench
