#include "Recording_Choice.h"

#include "decoding/Recording_Export.h"
#include "description/Description_File.h"

#include <stdexcept>

namespace Pelgar::ORBE::view {

namespace {

constexpr const char* raw_format = "raw";
constexpr const char* raw_file_name = "raw_data.bin";

Recording_Choice choose_folder(const std::filesystem::path& folder) {
    const recorder::Described_Folder described = recorder::read_description(folder);
    if (described.format != raw_format) {
        throw std::runtime_error("'" + folder.string() + "' is a recording in the format " +
                                 described.format + "; orbe-view shows those in the format raw");
    }
    Recording_Choice choice;
    choice.file = folder / raw_file_name;
    choice.grows = true;
    choice.description = described.description;
    return choice;
}

} // namespace

Recording_Choice choose_recording(const std::filesystem::path& path) {
    if (std::filesystem::is_directory(path)) {
        return choose_folder(path);
    }
    Recording_Choice choice;
    choice.file = path;
    const auto folder = path.parent_path();
    if (std::filesystem::exists(folder / recorder::description_file_name)) {
        choice.description = recorder::read_description(folder).description;
        return choice;
    }
    const recorder::Raw_Content content = recorder::raw_content(path);
    for (const int port : content.ports) {
        choice.description.probes.push_back(recorder::default_probe(port));
    }
    if (content.has_adc) {
        choice.description.adc.emplace();
    }
    return choice;
}

} // namespace Pelgar::ORBE::view
