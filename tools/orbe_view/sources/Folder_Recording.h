// Program orbe-view, sources. A folder in the format of SpikeGLX or the Open Ephys GUI, finished or still
// being written, by whoever writes it. Used as A_Recording says. It reads and nothing else, so that a writer
// does not notice.
#pragma once

#include "folders/Folder_Layout.h"
#include "folders/Gap_Table_Reader.h"
#include "folders/Stream_Feed.h"
#include "sources/A_Recording.h"
#include "sources/Growth.h"

#include <chrono>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace Pelgar::ORBE::view {

class Folder_Recording final : public A_Recording {
public:
    using Clock = std::chrono::steady_clock;

    // Looks for the first time. Throws std::runtime_error when there is nothing to show and nothing comes.
    explicit Folder_Recording(Folder_Layout layout, Clock::time_point now = Clock::now());

    std::string name() const override { return m_layout.folder.filename().string(); }

    const recorder::Recording_Description& description() const override { return m_layout.description; }

    bool grows() const override;
    std::string problem() const override;
    std::size_t size() const override;
    std::optional<std::uint64_t> begin_of(std::size_t piece) const override;
    std::size_t piece_of(std::uint64_t sample) const override;
    std::uint64_t length() const override;

    // The table of gaps tells of the whole at once.
    double known_part() const override { return 1.0; }

    // Lost samples of the probes and the ADC inputs.
    std::vector<Damage_Counts> damage(std::size_t stretches) const override;
    std::uint64_t burst() const override;

    void look() override;
    // What a clock says that stands at `now`.
    void look(Clock::time_point now);
    void begin(std::size_t piece, Histories& histories) override;
    bool show_next(Histories& histories) override;

    std::size_t next() const override { return m_next; }

    Health health_of(std::size_t begin, std::size_t end, const Histories& histories) override;

private:
    // What is known by now.
    struct State {
        std::uint64_t length = 0;
        std::size_t pieces = 0;
        bool grows = false;
        std::string problem;
        std::vector<std::uint64_t> rows; // of each stream, that can be shown
        std::shared_ptr<const Gap_Lists> gaps;
    };

    State state() const;
    void publish(Clock::time_point now);
    bool was_written_lately() const;

    Folder_Layout m_layout;

    // Of the source's thread.
    std::vector<Stream_Feed> m_feeds;
    Gap_Table_Reader m_gap_table;
    Clock::time_point m_looked_at;
    Clock::time_point m_grew_at;
    std::size_t m_next = 0;

    mutable std::mutex m_mutex;
    State m_state;
};

} // namespace Pelgar::ORBE::view
