#include "Host_Road_Data.h"

#include "Host_Road_Expectation.h"
#include "expectation/ADC_Expectation.h"
#include "expectation/Port_Expectation.h"
#include "generator/Recording_Generator.h"
#include "stream_format/Wire_Format.h"

#include <algorithm>
#include <cstddef>
#include <fstream>
#include <span>
#include <stdexcept>
#include <vector>

namespace Pelgar::ORBE::host {

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::uint64_t blocks = 3;
constexpr std::uint32_t block_packets = 149; // at the least
// Beyond the blocks, so that they do not end where the recording ends.
constexpr std::uint64_t more_super_frames = 300;
// One ADC packet a frame, of which some go with what is cut off at the end.
constexpr std::uint64_t rhd_frames = 480;
constexpr std::size_t least_adc_packets = 450;

Bytes make_probe_rows() {
    recording::Recording_Options options;
    options.super_frames = blocks * recording::super_frames_per_block + more_super_frames;
    options.rhd = false;
    options.seed = 7;
    return recording::make_recording(options);
}

Bytes make_rhd_rows() {
    recording::Recording_Options options;
    options.super_frames = rhd_frames;
    options.ports = {};
    options.seed = 8;
    return recording::make_recording(options);
}

// Spreads the RHD rows evenly over the probes' rows.
Bytes interleave(std::span<const std::uint8_t> probe_rows, std::span<const std::uint8_t> rhd_rows) {
    const std::size_t distance =
        probe_rows.size() / recording::row_bytes / (rhd_rows.size() / recording::row_bytes + 1);
    Bytes rows;
    rows.reserve(probe_rows.size() + rhd_rows.size());
    while (!probe_rows.empty() || !rhd_rows.empty()) {
        const auto probes = probe_rows.first(std::min(probe_rows.size(), distance * recording::row_bytes));
        rows.insert(rows.end(), probes.begin(), probes.end());
        probe_rows = probe_rows.subspan(probes.size());
        const auto rhd = rhd_rows.first(std::min(rhd_rows.size(), recording::row_bytes));
        rows.insert(rows.end(), rhd.begin(), rhd.end());
        rhd_rows = rhd_rows.subspan(rhd.size());
    }
    return rows;
}

void write(std::ofstream& file, const void* data, std::size_t size) {
    file.write(static_cast<const char*>(data), static_cast<std::streamsize>(size));
}

std::ofstream open_file(const std::filesystem::path& path) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    if (!file) {
        throw std::runtime_error("cannot write '" + path.string() + "'");
    }
    return file;
}

void close_file(std::ofstream& file, const std::filesystem::path& path) {
    file.close();
    if (!file) {
        throw std::runtime_error("cannot write '" + path.string() + "'");
    }
}

void write_recording(const std::filesystem::path& path) {
    Bytes rows = interleave(make_probe_rows(), make_rhd_rows());
    // Whole pieces, as the simulation reads them. What is cut off belongs to the super frames beyond the
    // blocks.
    rows.resize(rows.size() / recording::piece_bytes * recording::piece_bytes);
    std::ofstream file = open_file(path);
    write(file, rows.data(), rows.size());
    close_file(file, path);
}

std::vector<Neuropixels::electrodePacket> electrode_packets(const std::filesystem::path& recording_path,
                                                            unsigned port) {
    recording::Port_Expectation expectation(recording::Piece_Reader(recording_path), port);
    std::vector<Neuropixels::electrodePacket> packets;
    while (const auto* const packet = expectation.next()) {
        packets.push_back(*packet);
    }
    if (packets.size() < blocks * block_packets || packets.size() > most_packets) {
        throw std::runtime_error("the recording yields " + std::to_string(packets.size()) +
                                 " packets of port " + std::to_string(port));
    }
    return packets;
}

std::vector<Expected_ADC_Packet> adc_packets(const std::filesystem::path& recording_path) {
    recording::ADC_Expectation expectation{recording::Piece_Reader(recording_path)};
    std::vector<Expected_ADC_Packet> packets;
    while (const auto* const packet = expectation.next()) {
        Expected_ADC_Packet expected{};
        expected.info.Status = packet->status;
        std::copy(packet->samples.begin(), packet->samples.end(), expected.samples);
        packets.push_back(expected);
    }
    if (packets.size() < least_adc_packets || packets.size() > most_packets) {
        throw std::runtime_error("the recording yields " + std::to_string(packets.size()) + " ADC packets");
    }
    return packets;
}

void write_expectation(const std::filesystem::path& recording_path, const std::filesystem::path& path) {
    Expectation_Head head{};
    head.magic = expectation_magic;
    std::ofstream file = open_file(path);
    write(file, &head, sizeof head);
    for (unsigned i = 0; i < port_count; ++i) {
        const auto packets = electrode_packets(recording_path, i + 1);
        head.electrode_packets[i] = static_cast<std::uint32_t>(packets.size());
        write(file, packets.data(), packets.size() * sizeof(Neuropixels::electrodePacket));
    }
    const auto adc = adc_packets(recording_path);
    head.adc_packets = static_cast<std::uint32_t>(adc.size());
    write(file, adc.data(), adc.size() * sizeof(Expected_ADC_Packet));
    // Now that all numbers are known.
    file.seekp(0);
    write(file, &head, sizeof head);
    close_file(file, path);
}

} // namespace

void make_host_road_data(const std::filesystem::path& recording, const std::filesystem::path& expectation) {
    write_recording(recording);
    write_expectation(recording, expectation);
}

} // namespace Pelgar::ORBE::host
