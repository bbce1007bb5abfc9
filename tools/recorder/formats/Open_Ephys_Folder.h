// Tools, recorder. A recording's folder in the binary format of the Open Ephys GUI. Used as A_Folder_Format
// says.
#pragma once

#include "description/Recording_Description.h"
#include "formats/A_Folder_Format.h"
#include "formats/Open_Ephys_Structure.h"

#include <filesystem>
#include <memory>

namespace Pelgar::ORBE::recorder {

class Open_Ephys_Folder final : public A_Folder_Format {
public:
    // Throws std::filesystem::filesystem_error when a folder cannot be made, std::system_error for a file.
    Open_Ephys_Folder(const std::filesystem::path& folder, const Recording_Description& description);

    Named_Sink make_ap_sink(std::size_t probe) override;
    Named_Sink make_lfp_sink(std::size_t probe) override;
    Named_Sink make_adc_sink() override;

private:
    Named_Sink make_sink(Open_Ephys_Stream::Kind kind, std::size_t probe) const;

    std::shared_ptr<Open_Ephys_Structure> m_structure;
};

} // namespace Pelgar::ORBE::recorder
