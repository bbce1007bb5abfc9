// Tools, recorder. Keeps structure.oebin as the recording grows: a stream stands in it from its first sample
// on, its events from the first one on. Called on the threads of all streams; blocks on the disk.
#pragma once

#include "description/Recording_Description.h"
#include "formats/Open_Ephys_Files.h"

#include <cstddef>
#include <filesystem>
#include <mutex>
#include <vector>

namespace Pelgar::ORBE::recorder {

class Open_Ephys_Structure {
public:
    // All operations throw std::system_error with the file's name.
    Open_Ephys_Structure(const std::filesystem::path& folder, const Recording_Description& description);

    const std::vector<Open_Ephys_Stream>& streams() const { return m_streams; }

    const Recording_Description& description() const { return m_description; }

    // What is there of the stream by now, on the disk.
    void tell(std::size_t stream, const Open_Ephys_Presence& presence);

private:
    void write() const;

    const std::filesystem::path m_path;
    const Recording_Description m_description;
    const std::vector<Open_Ephys_Stream> m_streams;
    const std::vector<Open_Ephys_Entry> m_entries;
    std::mutex m_mutex;
    std::vector<Open_Ephys_Presence> m_presences;
};

} // namespace Pelgar::ORBE::recorder
