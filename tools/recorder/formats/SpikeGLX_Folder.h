// Tools, recorder. A recording's folder in the format of SpikeGLX. Used as A_Folder_Format says.
#pragma once

#include "description/Recording_Description.h"
#include "formats/A_Folder_Format.h"
#include "formats/SpikeGLX_Files.h"

#include <filesystem>
#include <memory>
#include <vector>

namespace Pelgar::ORBE::recorder {

class SpikeGLX_Folder final : public A_Folder_Format {
public:
    // Throws std::filesystem::filesystem_error when a folder cannot be made.
    SpikeGLX_Folder(const std::filesystem::path& folder, const Recording_Description& description);

    Named_Sink make_ap_sink(std::size_t probe) override;
    Named_Sink make_lfp_sink(std::size_t probe) override;
    Named_Sink make_adc_sink() override;

private:
    Named_Sink make_sink(SpikeGLX_Stream::Kind kind, std::size_t probe) const;

    std::shared_ptr<const Recording_Description> m_description;
    std::vector<SpikeGLX_Stream> m_streams;
};

} // namespace Pelgar::ORBE::recorder
