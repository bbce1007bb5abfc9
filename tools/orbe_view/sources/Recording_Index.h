// Program orbe-view, sources. Where in a raw recording which time lies, and what is wrong there, for every
// piece of 1 MiB and for the rest behind them, once nothing more is being written. A thread of its own reads
// the file from its beginning, and on while it grows; asked on any thread. Throws nothing: what went wrong is
// `problem`.
#pragma once

#include "checker/Recording_Checker.h"
#include "sources/A_Source.h"
#include "sources/Damage_Map.h"
#include "sources/Growth.h"
#include "sources/Sample_Finder.h"

#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace Pelgar::ORBE::view {

class Recording_Index {
public:
    // What is known about a piece of the recording.
    struct Piece {
        std::uint64_t sample = 0; // the first one of the port that is farthest on
        Sample_Finder::Places first;
        std::array<std::uint32_t, stream_count> samples{}; // super frames and RHD frames in it
        std::array<std::uint32_t, stream_count> row_gaps{};
        std::array<std::uint32_t, port_count> frame_gaps{};
        std::array<std::uint32_t, port_count> wrong_tags{};
        std::uint32_t others = 0;

        Damage_Counts damage() const;
    };

    // `may_grow`: somebody may be writing the file, and go on whenever he likes.
    Recording_Index(std::filesystem::path file, bool may_grow, const Growth_Patience& patience = {});
    ~Recording_Index();
    Recording_Index(const Recording_Index&) = delete;
    Recording_Index& operator=(const Recording_Index&) = delete;

    std::size_t size() const;
    // Nothing for one that is not known yet.
    std::optional<Piece> piece(std::size_t number) const;
    // The piece in which the sample lies; the last one for a sample beyond it.
    std::size_t piece_of(std::uint64_t sample) const;

    // So much of the piece is known.
    std::uint64_t bytes_of(std::size_t number) const;

    // Whether all that there is has been read, by now, and nothing is being added.
    bool is_complete() const { return m_is_complete; }

    // Whether something has been added lately.
    bool grows() const { return m_grows; }

    std::string problem() const;

    // Samples up to the end of the last piece.
    std::uint64_t length() const;
    // Bytes whose pieces are known, of those that are there by now.
    double known_part() const;
    std::vector<Damage_Counts> damage(std::size_t stretches) const;

private:
    void run();
    void read();
    void add_piece(std::span<const std::uint8_t> bytes);
    void add_rest(std::span<const std::uint8_t> bytes);
    Piece difference(const recording::Check_Report& before, const recording::Check_Report& after) const;
    std::uint64_t place(Piece& piece) const;
    bool wait(std::chrono::milliseconds time);

    const std::filesystem::path m_file;
    const bool m_may_grow;
    const Growth_Patience m_patience;

    // Of the thread: what is known of the whole pieces.
    recording::Recording_Checker m_checker;
    recording::Check_Report m_report;
    Sample_Finder m_finder;

    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_stops = false;
    std::vector<Piece> m_pieces; // whole ones
    Damage_Map m_damage;         // of these
    std::optional<Piece> m_rest; // what is behind them, until that is a whole piece
    std::uint64_t m_rest_bytes = 0;
    std::uint64_t m_whole_length = 0; // of the whole pieces
    std::uint64_t m_length = 0;
    std::string m_problem;
    std::atomic<std::uint64_t> m_bytes_read{0};
    std::atomic<std::uint64_t> m_bytes{0};
    std::atomic<bool> m_is_complete{false};
    std::atomic<bool> m_grows;
    std::thread m_thread; // last: it uses the others
};

} // namespace Pelgar::ORBE::view
