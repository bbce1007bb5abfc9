#include "repair/SpikeGLX_Repair.h"

#include "description/Whole_File.h"
#include "formats/SpikeGLX_Files.h"

namespace Pelgar::ORBE::recorder {

namespace {

// What somebody has added to the metadata stays.
std::string metadata_of(const SpikeGLX_Stream& stream, const Recording_Description& description,
                        std::uint64_t bytes) {
    if (std::filesystem::exists(stream.meta_path)) {
        const std::string text = read_file(stream.meta_path);
        if (text.find("fileSizeBytes=") != std::string::npos &&
            text.find("~snsChanMap=") != std::string::npos) {
            return with_file_size(text, stream, bytes);
        }
    }
    return spikeglx_metadata(stream, description, bytes);
}

} // namespace

Stream_Lengths repair_spikeglx(const std::filesystem::path& folder, const Recording_Description& description,
                               Folder_Repair& repair) {
    Stream_Lengths lengths;
    for (const SpikeGLX_Stream& stream : spikeglx_streams(folder, description)) {
        const std::uint64_t row_bytes = stream.column_count * sizeof(std::int16_t);
        const std::uint64_t rows = repair.cut_to_whole(stream.data_path, row_bytes);
        lengths[stream.name] = rows;
        if (rows == 0) {
            // Readers refuse the whole recording for a data file without samples, and ignore metadata alone.
            repair.remove(stream.data_path);
        }
        repair.make_content(stream.meta_path, metadata_of(stream, description, rows * row_bytes));
    }
    return lengths;
}

} // namespace Pelgar::ORBE::recorder
