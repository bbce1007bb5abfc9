// Tools, recorder. Puts the samples of one stream where they belong in its files, and tells of the gaps
// between them. The stream's thread; blocks on the disk. The counts may be read on any thread.
#pragma once

#include "formats/A_Folder_Format.h"
#include "formats/Gap_Table.h"

#include <atomic>
#include <cstdint>
#include <limits>

namespace Pelgar::ORBE::recorder {

class Stream_Writer {
public:
    // The files begin with sample `first` and end before `end`. `free_head` samples may be lacking at the
    // beginning without being lost. `gaps` must outlive the writer.
    Stream_Writer(Named_Sink sink, Gap_Table& gaps, std::uint64_t first, std::uint64_t end,
                  std::uint64_t free_head);

    // Rows from sample `number` on, which follow each other. Numbers only grow; what lies outside is left
    // out.
    void write(std::uint64_t number, const Sample_Rows& rows);

    void finish();

    const std::string& name() const { return m_sink.name; }

    std::uint64_t samples() const { return m_samples.load(std::memory_order_relaxed); }

    std::uint64_t lost_samples() const { return m_lost.load(std::memory_order_relaxed); }

    std::uint64_t bytes() const { return m_bytes.load(std::memory_order_relaxed); }

private:
    void fill_up_to(std::uint64_t place);

    Named_Sink m_sink;
    Gap_Table& m_gaps;
    const std::uint64_t m_first;
    const std::uint64_t m_end;
    const std::uint64_t m_free_head;
    std::atomic<std::uint64_t> m_samples{0}; // in the files, and the place of the next one
    std::atomic<std::uint64_t> m_lost{0};
    std::atomic<std::uint64_t> m_bytes{0};
};

} // namespace Pelgar::ORBE::recorder
