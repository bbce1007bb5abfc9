#include "formats/SpikeGLX_Folder.h"

#include "formats/SpikeGLX_Sink.h"

#include <algorithm>

namespace Pelgar::ORBE::recorder {

SpikeGLX_Folder::SpikeGLX_Folder(const std::filesystem::path& folder,
                                 const Recording_Description& description)
    : m_description(std::make_shared<Recording_Description>(description)),
      m_streams(spikeglx_streams(folder, description)) {
    for (const SpikeGLX_Stream& stream : m_streams) {
        std::filesystem::create_directories(stream.data_path.parent_path());
    }
}

Named_Sink SpikeGLX_Folder::make_sink(SpikeGLX_Stream::Kind kind, std::size_t probe) const {
    const auto stream =
        std::find_if(m_streams.begin(), m_streams.end(), [&](const SpikeGLX_Stream& candidate) {
            return candidate.kind == kind && candidate.probe == probe;
        });
    return {stream->name, std::make_unique<SpikeGLX_Sink>(*stream, m_description)};
}

Named_Sink SpikeGLX_Folder::make_ap_sink(std::size_t probe) {
    return make_sink(SpikeGLX_Stream::Kind::ap, probe);
}

Named_Sink SpikeGLX_Folder::make_lfp_sink(std::size_t probe) {
    return make_sink(SpikeGLX_Stream::Kind::lfp, probe);
}

Named_Sink SpikeGLX_Folder::make_adc_sink() {
    return make_sink(SpikeGLX_Stream::Kind::adc, 0);
}

} // namespace Pelgar::ORBE::recorder
