#include "Recorded_Folder.h"

#include "expectation/ADC_Expectation.h"
#include "expectation/Port_Expectation.h"

#include <algorithm>
#include <fstream>

namespace Pelgar::ORBE::test {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t channels = 384;
constexpr std::size_t inputs = 8;
constexpr int middle = 512;

// The first of the folder's files whose path, its folder's name included, ends so.
fs::path file_with_ending(const fs::path& folder, const std::string& ending) {
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        if (entry.is_regular_file() && entry.path().generic_string().ends_with(ending)) {
            return entry.path();
        }
    }
    return {};
}

Recorded_Samples columns_of(const fs::path& path, std::size_t all, std::size_t wanted) {
    Recorded_Samples samples{wanted, {}};
    std::ifstream file(path, std::ios::binary);
    std::vector<std::int16_t> row(all);
    while (file.read(reinterpret_cast<char*>(row.data()), static_cast<std::streamsize>(all * 2))) {
        samples.values.insert(samples.values.end(), row.begin(),
                              row.begin() + static_cast<std::ptrdiff_t>(wanted));
    }
    return samples;
}

void append_signed(Recorded_Samples& samples, const std::int16_t* values) {
    for (std::size_t channel = 0; channel < channels; ++channel) {
        samples.values.push_back(static_cast<std::int16_t>(values[channel] - middle));
    }
}

} // namespace

Recorded_Samples recorded_probe(const fs::path& folder, unsigned probe, bool is_lfp) {
    const std::string band = is_lfp ? "lf" : "ap";
    const fs::path spikeglx = file_with_ending(folder, ".imec" + std::to_string(probe) + "." + band + ".bin");
    if (!spikeglx.empty()) {
        return columns_of(spikeglx, channels + 1, channels);
    }
    const char letter = static_cast<char>('A' + probe);
    return columns_of(file_with_ending(folder, std::string("Probe") + letter + (is_lfp ? "-LFP" : "-AP") +
                                                   "/continuous.dat"),
                      channels, channels);
}

Recorded_Samples recorded_inputs(const fs::path& folder) {
    const fs::path spikeglx = file_with_ending(folder, ".obx.bin");
    if (!spikeglx.empty()) {
        return columns_of(spikeglx, 14, inputs);
    }
    return columns_of(file_with_ending(folder, "ADC/continuous.dat"), 12, inputs);
}

// The library's own packets have eleven AP samples in the first one.
Recorded_Samples made_probe(const std::string& recording, unsigned port, bool is_lfp) {
    Recorded_Samples samples{channels, {}};
    recording::Port_Expectation expectation(recording::Piece_Reader{recording}, port);
    std::size_t rows = NP1_PROBE_SUPERFRAMESIZE - 1;
    while (const Neuropixels::electrodePacket* const packet = expectation.next()) {
        if (is_lfp) {
            append_signed(samples, packet->lfpData);
        } else {
            for (std::size_t row = 0; row < rows; ++row) {
                append_signed(samples, packet->apData[row]);
            }
        }
        rows = NP1_PROBE_SUPERFRAMESIZE;
    }
    return samples;
}

Recorded_Samples made_inputs(const std::string& recording) {
    Recorded_Samples samples{inputs, {}};
    recording::ADC_Expectation expectation(recording::Piece_Reader{recording});
    while (const recording::ADC_Packet* const packet = expectation.next()) {
        samples.values.insert(samples.values.end(), packet->samples.begin(),
                              packet->samples.begin() + inputs);
    }
    return samples;
}

std::string difference(const Recorded_Samples& recorded, const Recorded_Samples& made, std::size_t first,
                       std::size_t least_rows) {
    if (recorded.rows() < least_rows) {
        return "only " + std::to_string(recorded.rows()) + " rows";
    }
    // What was made is known by whole blocks of the library's own way.
    if (made.rows() + 2 * 1792 < first + recorded.rows()) {
        return std::to_string(recorded.rows()) + " rows, of which only " + std::to_string(made.rows()) +
               " were made";
    }
    const std::size_t begin = std::min(first * made.columns, made.values.size());
    const std::size_t common = std::min(recorded.values.size(), made.values.size() - begin);
    for (std::size_t i = 0; i < common; ++i) {
        if (recorded.values[i] != made.values[begin + i]) {
            return "row " + std::to_string(i / made.columns) + ", column " +
                   std::to_string(i % made.columns) + ": " + std::to_string(recorded.values[i]) +
                   " instead of " + std::to_string(made.values[begin + i]);
        }
    }
    return "";
}

} // namespace Pelgar::ORBE::test
