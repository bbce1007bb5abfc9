#include "Recording_Choice.h"

#include "decoding/Recording_Export.h"
#include "description/Description_File.h"
#include "folders/Folder_Layout.h"
#include "folders/Foreign_SpikeGLX.h"
#include "sources/Folder_Recording.h"
#include "sources/Raw_Recording.h"

#include <utility>

namespace Pelgar::ORBE::view {

namespace {

constexpr const char* raw_format = "raw";
constexpr const char* raw_file_name = "raw_data.bin";

std::unique_ptr<A_Recording> choose_folder(const std::filesystem::path& folder) {
    if (!std::filesystem::exists(folder / recorder::description_file_name)) {
        return std::make_unique<Folder_Recording>(foreign_spikeglx_layout(folder));
    }
    recorder::Described_Folder described = recorder::read_description(folder);
    if (described.format != raw_format) {
        return std::make_unique<Folder_Recording>(layout_of(folder, described));
    }
    return std::make_unique<Raw_Recording>(folder / raw_file_name, true, std::move(described.description));
}

// As the folder around it says, or else as what is in it.
recorder::Recording_Description description_of(const std::filesystem::path& file) {
    const auto folder = file.parent_path();
    if (std::filesystem::exists(folder / recorder::description_file_name)) {
        return recorder::read_description(folder).description;
    }
    const recorder::Raw_Content content = recorder::raw_content(file);
    recorder::Recording_Description description;
    for (const int port : content.ports) {
        description.probes.push_back(recorder::default_probe(port));
    }
    if (content.has_adc) {
        description.adc.emplace();
    }
    return description;
}

} // namespace

std::unique_ptr<A_Recording> choose_recording(const std::filesystem::path& path) {
    if (std::filesystem::is_directory(path)) {
        // "monday/" is shown by its name, too.
        const std::filesystem::path folder = path.lexically_normal();
        return choose_folder(folder.has_filename() ? folder : folder.parent_path());
    }
    return std::make_unique<Raw_Recording>(path, false, description_of(path));
}

} // namespace Pelgar::ORBE::view
