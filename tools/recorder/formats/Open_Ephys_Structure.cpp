#include "formats/Open_Ephys_Structure.h"

#include "description/Whole_File.h"

namespace Pelgar::ORBE::recorder {

Open_Ephys_Structure::Open_Ephys_Structure(const std::filesystem::path& folder,
                                           const Recording_Description& description)
    : m_path(open_ephys_structure_path(folder)), m_description(description),
      m_streams(open_ephys_streams(folder, description)),
      m_entries(open_ephys_entries(m_streams, description)), m_presences(m_streams.size()) {
    write();
}

void Open_Ephys_Structure::tell(std::size_t stream, const Open_Ephys_Presence& presence) {
    const std::lock_guard lock(m_mutex);
    if (m_presences.at(stream) != presence) {
        m_presences[stream] = presence;
        write();
    }
}

void Open_Ephys_Structure::write() const {
    write_file(m_path, open_ephys_structure(m_entries, m_presences));
}

} // namespace Pelgar::ORBE::recorder
