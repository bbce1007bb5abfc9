// Program orbe-view, sources. Where in a raw recording which time lies, and what is wrong there, for every
// piece of 1 MiB. A thread of its own reads the file from its beginning, and on while it grows; asked on any
// thread. Throws nothing: what went wrong is `problem`.
#pragma once

#include "checker/Recording_Checker.h"
#include "sources/A_Source.h"
#include "sources/Super_Frame_Finder.h"

#include <array>
#include <atomic>
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
        Super_Frame_Finder::Places first;
        std::array<std::uint32_t, stream_count> samples{}; // super frames and RHD frames in it
        std::array<std::uint32_t, stream_count> row_gaps{};
        std::array<std::uint32_t, port_count> frame_gaps{};
        std::array<std::uint32_t, port_count> wrong_tags{};
        std::uint32_t others = 0;

        Damage_Counts damage() const;
    };

    // `grows`: at the end of the file more is waited for.
    Recording_Index(std::filesystem::path file, bool grows);
    ~Recording_Index();
    Recording_Index(const Recording_Index&) = delete;
    Recording_Index& operator=(const Recording_Index&) = delete;

    std::size_t size() const;
    // Nothing for one that is not known yet.
    std::optional<Piece> piece(std::size_t number) const;
    // The piece in which the sample lies; the last one for a sample beyond it.
    std::size_t piece_of(std::uint64_t sample) const;

    // Whether all of a file that does not grow has been read.
    bool is_complete() const { return m_is_complete; }

    std::string problem() const;

    // Samples up to the end of the last piece.
    std::uint64_t length() const;
    // Bytes read, of those that were there.
    double known_part() const;
    std::vector<Damage_Counts> damage(std::size_t stretches) const;

private:
    void run();
    void read();
    void add(std::span<const std::uint8_t> piece);
    Piece difference(const recording::Check_Report& before, const recording::Check_Report& after) const;

    const std::filesystem::path m_file;
    const bool m_grows;

    // Of the thread.
    recording::Recording_Checker m_checker;
    recording::Check_Report m_report;
    Super_Frame_Finder m_finder;

    mutable std::mutex m_mutex;
    std::vector<Piece> m_pieces;
    std::uint64_t m_length = 0;
    std::string m_problem;
    std::atomic<std::uint64_t> m_bytes_read{0};
    std::atomic<std::uint64_t> m_bytes{0};
    std::atomic<bool> m_is_complete{false};
    std::atomic<bool> m_stops{false};
    std::thread m_thread; // last: it uses the others
};

} // namespace Pelgar::ORBE::view
