// Program orbe-record. Stands in for a writer while the library itself writes the raw stream: counts the
// samples that the stream brings and those that it lacks. Each stream on one thread; the counts on any.
#pragma once

#include "description/Recording_Description.h"
#include "formats/A_Recording_Writer.h"
#include "formats/Sample_Numbers.h"

#include <atomic>
#include <memory>
#include <vector>

namespace Pelgar::ORBE::recorder {

class Sample_Counter final : public A_Recording_Writer {
public:
    explicit Sample_Counter(const Recording_Description& description);

    std::size_t stream_count() const override { return m_streams.size(); }

    std::string stream_name(std::size_t stream) const override;

    void write_probe(std::size_t probe, std::span<const Neuropixels::electrodePacket> packets) override;
    void write_adc(std::span<const Neuropixels::PacketInfo> infos,
                   std::span<const std::int16_t> rows) override;

    void finish() override {}

    std::uint64_t samples(std::size_t stream) const override { return m_streams.at(stream)->samples; }

    std::uint64_t lost_samples(std::size_t stream) const override { return m_streams.at(stream)->lost; }

    // Those are the library's.
    std::uint64_t bytes_written() const override { return 0; }

private:
    struct Counted_Stream {
        Sample_Numbers numbers;
        std::atomic<std::uint64_t> samples{0};
        std::atomic<std::uint64_t> lost{0};
    };

    void count(Counted_Stream& stream, std::uint32_t stamp) const;

    std::uint64_t m_first_sample;
    std::size_t m_probe_count;
    std::vector<std::unique_ptr<Counted_Stream>> m_streams;
};

} // namespace Pelgar::ORBE::recorder
