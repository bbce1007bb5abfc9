#include "Bench_Data.h"

#include "Bench_Stream.h"

#include "wire/Mux_Row_Format.h"

#include <algorithm>
#include <cstring>
#include <fstream>

namespace Pelgar::ORBE::bench {

namespace {

using demux::Main_mux_transfer_buffer_wrapper;
using demux::NP_Block_Buffer;
namespace mux_row = demux::mux_row;

void cut_into_transfers(const std::vector<std::uint8_t>& stream, Bench_Data& data) {
    for (std::size_t at = 0; at < stream.size(); at += demux::transfer_buffer_capacity) {
        auto transfer = std::make_unique<Main_mux_transfer_buffer_wrapper>();
        const std::size_t size = std::min(demux::transfer_buffer_capacity, stream.size() - at);
        std::memcpy(transfer->data, stream.data() + at, size);
        transfer->size = static_cast<std::uint32_t>(size);
        data.transfers.push_back(std::move(transfer));
    }
}

void split_rows(const std::vector<std::uint8_t>& stream, Bench_Data& data) {
    for (std::size_t at = 0; at < stream.size(); at += mux_row::length) {
        const std::uint8_t* const row = &stream[at];
        const unsigned stream_id = row[mux_row::marker_offset] & mux_row::stream_id_mask;
        if (stream_id == 0) {
            if (data.np_blocks.empty() || data.np_blocks.back()->fill == demux::np_block_capacity) {
                data.np_blocks.push_back(std::make_unique<NP_Block_Buffer>());
            }
            NP_Block_Buffer& block = *data.np_blocks.back();
            std::memcpy(block.data + block.fill, row + mux_row::payload_offset, mux_row::payload_length);
            block.fill += static_cast<std::uint32_t>(mux_row::payload_length);
            data.np_stream_bytes += mux_row::length;
        } else if (stream_id == mux_row::rhd_stream_id) {
            const std::size_t words = data.rhd_words.size();
            data.rhd_words.resize(words + mux_row::payload_words);
            std::memcpy(&data.rhd_words[words], row + mux_row::payload_offset, mux_row::payload_length);
            data.rhd_stream_bytes += mux_row::length;
        }
    }
}

Bench_Data make_data() {
    const Bench_Stream stream(full_box);
    Bench_Data data;
    data.stream_bytes = stream.bytes().size();
    cut_into_transfers(stream.bytes(), data);
    split_rows(stream.bytes(), data);
    return data;
}

constexpr const char* gain_calibration_file = "gain-calibration.csv";

bool write_gain_calibration() {
    std::ofstream file(gain_calibration_file);
    file << "1\n";
    for (int electrode = 0; electrode < 960; ++electrode) {
        file << electrode;
        for (int k = 0; k < 16; ++k) {
            file << ',' << 1.0 + electrode * 1e-4 + k * 1e-2;
        }
        file << '\n';
    }
    return file.good();
}

} // namespace

const Bench_Data& bench_data() {
    static const Bench_Data data = make_data();
    return data;
}

const char* gain_calibration_path() {
    // A file that could not be written is told by those who load it.
    [[maybe_unused]] static const bool written = write_gain_calibration();
    return gain_calibration_file;
}

} // namespace Pelgar::ORBE::bench
