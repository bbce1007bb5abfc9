#include "formats/Open_Ephys_Folder.h"

#include "description/Time_Text.h"
#include "description/Whole_File.h"
#include "formats/Npy_File.h"
#include "formats/Open_Ephys_Settings.h"
#include "formats/Open_Ephys_Sink.h"

#include <string>

namespace Pelgar::ORBE::recorder {

namespace {

void make_folders(const std::filesystem::path& folder, const Recording_Description& description) {
    for (const Open_Ephys_Stream& stream : open_ephys_streams(folder, description)) {
        std::filesystem::create_directories(stream.continuous_folder);
        if (stream.has_events()) {
            std::filesystem::create_directories(stream.events_folder);
        }
    }
    std::filesystem::create_directories(open_ephys_messages_folder(folder));
}

template <typename Number>
void write_number(const std::filesystem::path& path, const char* type, Number number) {
    Npy_File file(path, type);
    file.append(number);
    file.close();
}

// The one message is what the recording is of. Readers look for at least one list of events.
void write_messages(const std::filesystem::path& folder, const Recording_Description& description) {
    const std::filesystem::path messages = open_ephys_messages_folder(folder);
    const std::string text = "Recorded from " + description.source + ", first trigger at " +
                             time_text(description.start_time) + ", by version " +
                             description.program_version;
    write_file(messages / "text.npy", npy_head("|S" + std::to_string(text.size()), 1) + text);
    write_number(messages / "sample_numbers.npy", "<i8", static_cast<std::int64_t>(description.first_sample));
    write_number(messages / "timestamps.npy", "<f8",
                 static_cast<double>(description.first_sample) / ap_sample_rate);
}

} // namespace

Open_Ephys_Folder::Open_Ephys_Folder(const std::filesystem::path& folder,
                                     const Recording_Description& description) {
    make_folders(folder, description);
    write_messages(folder, description);
    write_file(open_ephys_settings_path(folder), open_ephys_settings(description));
    m_structure = std::make_shared<Open_Ephys_Structure>(folder, description);
}

Named_Sink Open_Ephys_Folder::make_sink(Open_Ephys_Stream::Kind kind, std::size_t probe) const {
    const auto& streams = m_structure->streams();
    std::size_t index = 0;
    while (streams.at(index).kind != kind || streams[index].probe != probe) {
        ++index;
    }
    return {streams[index].folder_name, std::make_unique<Open_Ephys_Sink>(m_structure, index)};
}

Named_Sink Open_Ephys_Folder::make_ap_sink(std::size_t probe) {
    return make_sink(Open_Ephys_Stream::Kind::ap, probe);
}

Named_Sink Open_Ephys_Folder::make_lfp_sink(std::size_t probe) {
    return make_sink(Open_Ephys_Stream::Kind::lfp, probe);
}

Named_Sink Open_Ephys_Folder::make_adc_sink() {
    return make_sink(Open_Ephys_Stream::Kind::adc, 0);
}

} // namespace Pelgar::ORBE::recorder
