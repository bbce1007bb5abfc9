#include "host_mode/Simulated_Probes.h"

#include "wire/Mux_Row_Format.h"

#include <cstddef>
#include <fstream>
#include <vector>

namespace Pelgar::ORBE::npoe_adapter {

namespace {

using namespace demux;

constexpr std::size_t looked_at = std::size_t{1} << 20U;

} // namespace

std::uint32_t ports_in_recording(const std::string& path) {
    std::vector<char> bytes(looked_at);
    std::ifstream file(path, std::ios::binary);
    file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    const auto size = static_cast<std::size_t>(file.gcount());
    std::uint32_t ports = 0;
    for (std::size_t at = 0; at + mux_row::length <= size; at += mux_row::length) {
        const unsigned head = static_cast<std::uint8_t>(bytes[at + mux_row::marker_offset]);
        const unsigned stream_id = head & mux_row::stream_id_mask;
        if ((head & mux_row::marker_mask) == mux_row::marker && stream_id < mux_row::rhd_stream_id) {
            ports |= 1U << stream_id;
        }
    }
    return ports;
}

} // namespace Pelgar::ORBE::npoe_adapter
