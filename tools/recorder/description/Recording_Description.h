// Tools, recorder. What a recording is of: probes and their settings, the ADC inputs, when and by what it was
// made. Plain data, made before the first packet comes.
#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Pelgar::ORBE::recorder {

inline constexpr std::size_t channel_count = 384;
inline constexpr std::size_t adc_input_count = 12;

inline constexpr int ap_sample_rate = 30'000;
inline constexpr int lfp_sample_rate = 2'500;
inline constexpr int adc_sample_rate = 30'000;

// What a channel of the probe is connected to and how it was amplified.
struct Channel_Description {
    int electrode = -1; // 0..959; -1: disconnected
    int ap_gain = 500;
    int lfp_gain = 250;
    int reference = 0; // 0: external, 1: tip, 2 to 4: the internal one of bank 0 to 2
    bool is_standby = false;

    bool operator==(const Channel_Description&) const = default;
};

struct Probe_Description {
    int port = 1; // 1..4
    std::uint64_t serial_number = 0;
    std::string part_number;
    std::string headstage_part_number;
    bool ap_filter = true;      // the high pass at 300 Hz
    bool is_calibrated = false; // ADCs and gains
    std::array<Channel_Description, channel_count> channels{};

    bool operator==(const Probe_Description&) const = default;
};

struct ADC_Description {
    double range_volts = 5.0; // of a sample of 32768
    int input_count = adc_input_count;

    bool operator==(const ADC_Description&) const = default;
};

using Start_Time = std::chrono::sys_time<std::chrono::milliseconds>;

struct Recording_Description {
    Start_Time start_time{};
    std::string source = "box"; // or the name of the raw recording
    std::string program_version;
    // What files are named after; empty: the folder. A recording keeps it when its folder gets another name.
    std::string run_name;
    // The first sample of every file of the recording, counted from the trigger; a multiple of 12.
    std::uint64_t first_sample = 0;
    // And the one before which they end, if not by themselves; a multiple of 12. Not in the file.
    std::optional<std::uint64_t> end_sample;
    std::vector<int> saved_channels; // of every probe, ascending; empty: all
    std::vector<Probe_Description> probes;
    std::optional<ADC_Description> adc;

    bool operator==(const Recording_Description&) const = default;
};

// The channels that are saved, said one by one.
std::vector<int> saved_channels(const Recording_Description& description);

// Bank 0 with the gains that acquisition programs begin with. Channel 191, where the reference electrode is,
// is disconnected.
Probe_Description default_probe(int port);

} // namespace Pelgar::ORBE::recorder
