// Tools, recorder. One stream of samples in the files of a format: a band of a probe, or the ADC inputs. The
// stream's thread; blocks on the disk.
#pragma once

#include <cstddef>
#include <cstdint>

namespace Pelgar::ORBE::recorder {

// Samples that follow each other, each a row with a value a channel.
struct Sample_Rows {
    const std::int16_t* values;
    std::size_t row_length;
    const std::uint16_t* status; // one a row; bit 6 is the sync input
    std::size_t count;
};

inline constexpr std::uint16_t sync_status = 1U << 6U;

class A_Stream_Sink {
public:
    virtual ~A_Stream_Sink() = default;

    // All operations throw std::system_error with the file's name.

    virtual void append(const Sample_Rows& rows) = 0;

    // So many samples that never came; an `append` follows.
    virtual void skip(std::uint64_t count) = 0;

    // Writes what is buffered and what is known only now.
    virtual void finish() = 0;

    virtual std::uint64_t bytes() const = 0;
};

} // namespace Pelgar::ORBE::recorder
