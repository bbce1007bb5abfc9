#include "repair/Repair.h"

#include "description/Description_File.h"
#include "formats/Make_Writer.h"
#include "repair/Folder_Repair.h"
#include "repair/Gap_Table_Repair.h"
#include "repair/Open_Ephys_Repair.h"
#include "repair/SpikeGLX_Repair.h"

#include <stdexcept>

namespace Pelgar::ORBE::recorder {

namespace {

// Pieces of files that were being replaced.
void remove_partial_files(const std::filesystem::path& folder, Folder_Repair& repair) {
    std::vector<std::filesystem::path> partial;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
        if (entry.is_regular_file() && entry.path().extension() == ".partial") {
            partial.push_back(entry.path());
        }
    }
    for (const std::filesystem::path& file : partial) {
        repair.remove(file);
    }
}

} // namespace

std::vector<std::string> repair_recording(const std::filesystem::path& folder) {
    const Described_Folder described = read_description(folder);
    Folder_Repair repair(folder);
    if (described.format == "raw") {
        // A row is 16 bytes, and its readers leave out what does not fill one.
        return {};
    }
    const auto format = format_of(described.format);
    if (!format) {
        throw std::runtime_error("'" + folder.string() + "' has the format '" + described.format +
                                 "', which is not known here");
    }
    remove_partial_files(folder, repair);
    const Stream_Lengths lengths = *format == Format::spikeglx
                                       ? repair_spikeglx(folder, described.description, repair)
                                       : repair_open_ephys(folder, described.description, repair);
    repair_gap_table(folder, lengths, repair);
    return repair.account();
}

} // namespace Pelgar::ORBE::recorder
