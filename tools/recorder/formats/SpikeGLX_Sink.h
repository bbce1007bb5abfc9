// Tools, recorder. A stream as SpikeGLX has it: all of a sample's channels, then its status word. The
// stream's thread; blocks on the disk.
#pragma once

#include "description/Recording_Description.h"
#include "formats/A_Stream_Sink.h"
#include "formats/Data_File.h"
#include "formats/SpikeGLX_Files.h"

#include <memory>
#include <vector>

namespace Pelgar::ORBE::recorder {

class SpikeGLX_Sink final : public A_Stream_Sink {
public:
    // Writes the metadata.
    SpikeGLX_Sink(SpikeGLX_Stream stream, std::shared_ptr<const Recording_Description> description);

    void append(const Sample_Rows& rows) override;
    void skip(std::uint64_t count) override;
    void finish() override;

    std::uint64_t bytes() const override { return m_file.size(); }

private:
    void fill_probe_row(const std::int16_t* values, std::int16_t* place) const;
    void fill_adc_row(const std::int16_t* values, std::int16_t* place) const;

    const SpikeGLX_Stream m_stream;
    const std::shared_ptr<const Recording_Description> m_description;
    const std::vector<int> m_channels;
    Data_File m_file;
    std::uint16_t m_last_status = 0;
};

} // namespace Pelgar::ORBE::recorder
