// Tools, recorder. The files of a recording in the binary format of the Open Ephys GUI: their names and the
// texts that describe them. Any thread; nothing blocks.
#pragma once

#include "description/Recording_Description.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace Pelgar::ORBE::recorder {

struct Open_Ephys_Stream {
    enum class Kind : std::uint8_t { ap, lfp, adc };

    Kind kind;
    std::size_t probe;       // its place in the description
    std::string name;        // "ProbeA-AP", "ProbeA-LFP", "ADC"
    std::string folder_name; // "ORBE-100.ProbeA-AP"
    std::filesystem::path continuous_folder;
    std::filesystem::path events_folder; // with the edges of the sync input
    std::size_t channel_count;
    int sample_rate;
    std::uint64_t first_sample;

    // The LFP band has no edges of its own: they are those of the AP band.
    bool has_events() const { return kind != Kind::lfp; }
};

// What has come of a stream so far: readers want to know of nothing that is empty.
struct Open_Ephys_Presence {
    bool has_samples = false;
    bool has_events = false;

    bool operator==(const Open_Ephys_Presence&) const = default;
};

std::filesystem::path open_ephys_recording_folder(const std::filesystem::path& folder);
std::filesystem::path open_ephys_structure_path(const std::filesystem::path& folder);
std::filesystem::path open_ephys_settings_path(const std::filesystem::path& folder);
std::filesystem::path open_ephys_messages_folder(const std::filesystem::path& folder);

std::vector<Open_Ephys_Stream> open_ephys_streams(const std::filesystem::path& folder,
                                                  const Recording_Description& description);

// What structure.oebin says of a stream: its samples and its events, each a line of JSON.
struct Open_Ephys_Entry {
    std::string continuous;
    std::string events;
};

std::vector<Open_Ephys_Entry> open_ephys_entries(const std::vector<Open_Ephys_Stream>& streams,
                                                 const Recording_Description& description);

// The text of structure.oebin, with what is there of each stream.
std::string open_ephys_structure(const std::vector<Open_Ephys_Entry>& entries,
                                 const std::vector<Open_Ephys_Presence>& presences);

} // namespace Pelgar::ORBE::recorder
