// Tools, recorder. Takes packets apart into the samples of a recording's streams, whatever the format.
// Threads as of A_Recording_Writer.
#pragma once

#include "description/Recording_Description.h"
#include "formats/A_Folder_Format.h"
#include "formats/A_Recording_Writer.h"
#include "formats/Gap_Table.h"
#include "formats/Sample_Numbers.h"
#include "formats/Stream_Writer.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <vector>

namespace Pelgar::ORBE::recorder {

class Packet_Writer final : public A_Recording_Writer {
public:
    Packet_Writer(std::unique_ptr<A_Folder_Format> format, const std::filesystem::path& folder,
                  const Recording_Description& description);

    std::size_t stream_count() const override;

    std::string stream_name(std::size_t stream) const override { return main_writer(stream).name(); }

    void write_probe(std::size_t probe, std::span<const Neuropixels::electrodePacket> packets) override;
    void write_adc(std::span<const Neuropixels::PacketInfo> infos,
                   std::span<const std::int16_t> rows) override;
    void finish() override;

    std::uint64_t samples(std::size_t stream) const override { return main_writer(stream).samples(); }

    std::uint64_t lost_samples(std::size_t stream) const override {
        return main_writer(stream).lost_samples();
    }

    std::uint64_t bytes_written() const override;

private:
    struct Probe_Stream {
        Stream_Writer ap;
        Stream_Writer lfp;
        Sample_Numbers numbers;
        // Which of twelve samples the stream's packets begin with, as long as nothing is lost.
        std::optional<std::uint64_t> phase;
    };

    struct ADC_Stream {
        Stream_Writer writer;
        Sample_Numbers numbers;
        std::vector<std::uint16_t> status;
    };

    void write_packet(Probe_Stream& stream, const Neuropixels::electrodePacket& packet) const;
    // That of a probe's AP band, or of the ADC inputs.
    const Stream_Writer& main_writer(std::size_t stream) const;

    const std::uint64_t m_first;
    std::unique_ptr<A_Folder_Format> m_format;
    Gap_Table m_gaps;
    std::vector<std::unique_ptr<Probe_Stream>> m_probes;
    std::unique_ptr<ADC_Stream> m_adc;
};

} // namespace Pelgar::ORBE::recorder
