// Program orbe-view, folders. Puts one stream of a recorded folder into its history, from a place on, what is
// lost as lost. The source's thread; blocks on the disk.
#pragma once

#include "folders/Digital_Lines.h"
#include "folders/Folder_Layout.h"
#include "folders/Gap_List.h"
#include "folders/Sample_File.h"
#include "history/Histories.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace Pelgar::ORBE::view {

class Stream_Feed {
public:
    explicit Stream_Feed(Folder_Stream stream);

    const Folder_Stream& stream() const { return m_stream; }

    // Looks how much is there; answers whether it has grown. Throws std::runtime_error for files that are
    // none of their kind.
    bool look();

    // Rows that are there whole. While the recording is being made, edges come a moment behind their samples.
    std::uint64_t rows(bool is_settled) const;

    // The next row that is shown.
    void go_to(std::uint64_t row) { m_next = row; }

    // The rows from there up to `end`. Throws std::runtime_error when they cannot be read.
    void show(std::uint64_t end, const Gap_List& gaps, Histories& histories);

private:
    void show_rows(std::uint64_t end, Histories& histories);
    void show_probe_rows(std::size_t count, Probe_History& history);
    void show_adc_rows(std::size_t count, ADC_History& history);
    void lose(std::uint64_t count, Histories& histories) const;

    Band band() const { return m_stream.kind == Folder_Stream::Kind::ap ? Band::ap : Band::lfp; }

    Folder_Stream m_stream;
    Sample_File m_file;
    std::optional<Digital_Lines> m_lines;
    std::uint64_t m_next = 0;
    std::vector<std::int16_t> m_values;
    std::vector<std::int16_t> m_probe_rows;
    std::vector<std::uint64_t> m_words;
    std::vector<ADC_History::Row> m_adc_rows;
};

} // namespace Pelgar::ORBE::view
