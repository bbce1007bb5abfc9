#include "formats/Make_Writer.h"

#include "description/Description_File.h"
#include "formats/Open_Ephys_Folder.h"
#include "formats/Packet_Writer.h"
#include "formats/SpikeGLX_Folder.h"

#include <system_error>

namespace Pelgar::ORBE::recorder {

std::string format_name(Format format) {
    return format == Format::spikeglx ? "spikeglx" : "open-ephys";
}

std::optional<Format> format_of(std::string_view name) {
    for (const Format format : {Format::spikeglx, Format::open_ephys}) {
        if (name == format_name(format)) {
            return format;
        }
    }
    return std::nullopt;
}

std::unique_ptr<A_Recording_Writer> make_writer(Format format, const std::filesystem::path& folder,
                                                const Recording_Description& wanted) {
    std::filesystem::create_directories(folder);
    if (std::filesystem::exists(folder / description_file_name)) {
        throw std::system_error(std::make_error_code(std::errc::file_exists),
                                "'" + folder.string() + "' holds a recording already");
    }
    Recording_Description description = wanted;
    if (description.run_name.empty()) {
        description.run_name = spikeglx_run_name(folder);
    }
    write_description(folder, format_name(format), description);
    std::unique_ptr<A_Folder_Format> format_folder;
    if (format == Format::spikeglx) {
        format_folder = std::make_unique<SpikeGLX_Folder>(folder, description);
    } else {
        format_folder = std::make_unique<Open_Ephys_Folder>(folder, description);
    }
    return std::make_unique<Packet_Writer>(std::move(format_folder), folder, description);
}

} // namespace Pelgar::ORBE::recorder
