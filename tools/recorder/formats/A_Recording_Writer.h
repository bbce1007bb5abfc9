// Tools, recorder. Writes the packets of a recording into a folder, in the format that it was made for. Each
// stream is written by one thread at a time, different streams by different threads at once. Blocks on the
// disk.
#pragma once

#include "NeuropixAPI.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace Pelgar::ORBE::recorder {

// The ADC inputs and their comparators.
inline constexpr std::size_t adc_row_length = 24;

class A_Recording_Writer {
public:
    virtual ~A_Recording_Writer() = default;

    // Streams: one a probe, in the order of the description, and behind them that of the ADC inputs where the
    // description has them.
    virtual std::size_t stream_count() const = 0;
    // As the table of gaps has it: that of the probe's AP band.
    virtual std::string stream_name(std::size_t stream) const = 0;

    // All operations that write throw std::system_error with the file's name. Whatever was written before
    // stays.

    virtual void write_probe(std::size_t probe, std::span<const Neuropixels::electrodePacket> packets) = 0;

    // Rows of `adc_row_length` samples, one a packet.
    virtual void write_adc(std::span<const Neuropixels::PacketInfo> infos,
                           std::span<const std::int16_t> rows) = 0;

    // Writes what is buffered and what is known only now, and closes all files, those of a stream also where
    // another one fails; the first failure is thrown at the end. No operation may follow.
    virtual void finish() = 0;

    // Any thread.

    // Samples that are in the stream, lost ones included, counted from the first one of the recording.
    virtual std::uint64_t samples(std::size_t stream) const = 0;
    // Samples that are in none of the stream's packets. Those of the first whole packet that a probe's stream
    // begins with, up to eleven, do not count.
    virtual std::uint64_t lost_samples(std::size_t stream) const = 0;
    // Of all files, lost samples included.
    virtual std::uint64_t bytes_written() const = 0;
};

} // namespace Pelgar::ORBE::recorder
