// Fuzzing: the recorder's reader of electrode maps. Whatever the file holds is refused with a line, or gives
// every channel one of its own electrodes or none.
//
// An input is the file.
#include "Fuzz_Target.h"

#include "Electrode_Map.h"
#include "Require.h"

#include <fstream>
#include <stdexcept>
#include <string>

namespace {

using namespace Pelgar::ORBE::recorder;
using Pelgar::ORBE::test::require;

constexpr const char* input_file = "input.csv";

void check(const Electrode_Map& map) {
    const int channels = static_cast<int>(channel_count);
    for (int port = 1; port <= Electrode_Map::port_count; ++port) {
        for (int channel = 0; channel < channels; ++channel) {
            const int electrode = map.electrode(port, channel);
            require(electrode >= Electrode_Map::disconnected && electrode < Electrode_Map::electrode_count,
                    "there is such an electrode");
            require(electrode == Electrode_Map::disconnected || electrode % channels == channel,
                    "the channel reaches it");
            require(channel != Electrode_Map::reference_channel || electrode == Electrode_Map::disconnected,
                    "the reference channel has none");
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::ofstream(input_file, std::ios::binary | std::ios::trunc)
        .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
    try {
        check(Electrode_Map::of_file(input_file));
    } catch (const std::invalid_argument& error) {
        require(std::string(error.what()).find(", line ") != std::string::npos, "the line is told");
    }
    return 0;
}
