// Tools, recorder. A stream as the Open Ephys GUI has it: the samples, the number and the time of each, and
// the edges of its digital lines. The stream's thread; blocks on the disk.
#pragma once

#include "formats/A_Stream_Sink.h"
#include "formats/Data_File.h"
#include "formats/Npy_File.h"
#include "formats/Open_Ephys_Structure.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace Pelgar::ORBE::recorder {

class Open_Ephys_Sink final : public A_Stream_Sink {
public:
    Open_Ephys_Sink(std::shared_ptr<Open_Ephys_Structure> structure, std::size_t stream);

    void append(const Sample_Rows& rows) override;
    void skip(std::uint64_t count) override;
    void finish() override;

    std::uint64_t bytes() const override;

private:
    // The sync input in the lowest bit, above it the comparators of the ADC inputs.
    std::uint32_t lines_of(const Sample_Rows& rows, std::size_t row) const;
    void follow_lines(const Sample_Rows& rows);
    void add_events(std::uint32_t lines, std::uint64_t place);
    void number_samples(std::size_t count);
    void flush();

    std::uint64_t sample_number(std::uint64_t place) const { return m_stream.first_sample + place; }

    double time_of(std::uint64_t place) const;

    const std::shared_ptr<Open_Ephys_Structure> m_structure;
    const std::size_t m_index;
    const Open_Ephys_Stream& m_stream;
    const std::vector<int> m_channels;
    Data_File m_samples;
    Npy_File m_sample_numbers;
    Npy_File m_times;
    Npy_File m_event_states;
    Npy_File m_event_sample_numbers;
    Npy_File m_event_times;
    Npy_File m_event_words;
    std::uint64_t m_count = 0;
    std::uint32_t m_lines = 0;
};

} // namespace Pelgar::ORBE::recorder
