// Program orbe-view, folders. Which files a recorded folder in the format of SpikeGLX or the Open Ephys GUI
// has, and what is where in them. Any thread; making one blocks on the disk.
#pragma once

#include "description/Description_File.h"
#include "description/Recording_Description.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace Pelgar::ORBE::view {

struct Folder_Stream {
    enum class Kind : std::uint8_t { ap, lfp, adc };

    Kind kind = Kind::ap;
    std::size_t probe = 0; // its place in the description
    std::string name;      // in the table of gaps
    std::filesystem::path data;
    std::size_t row_length = 0;
    // Of a probe: the channel of each of the first columns of a row. Of the ADC inputs they are the inputs.
    std::vector<int> channels;
    std::size_t input_count = 0;
    // Of the ADC inputs, whose comparators are a column of the row behind the inputs, or else edges in this
    // folder, with the number that the first sample of the file has there.
    std::optional<std::filesystem::path> lines;
    std::uint64_t first_sample = 0;

    // AP samples for one of this stream.
    std::uint64_t step() const {
        return kind == Kind::lfp ? recorder::ap_sample_rate / recorder::lfp_sample_rate : 1;
    }
};

struct Folder_Layout {
    std::filesystem::path folder;
    recorder::Recording_Description description;
    std::vector<Folder_Stream> streams;
    bool has_gap_table = true; // or else nothing is known of losses
};

// Of a folder that orbe-record or orbe-recording writes or has written. Throws std::runtime_error that says
// what is wrong: another format, or files that are not as the description says.
Folder_Layout layout_of(const std::filesystem::path& folder, const recorder::Described_Folder& described);

} // namespace Pelgar::ORBE::view
