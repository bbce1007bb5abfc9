// Program orbe-view, sources. When a recording that somebody may be making counts as settled and as finished.
// Any thread; blocks on the disk.
#pragma once

#include <chrono>
#include <filesystem>
#include <system_error>

namespace Pelgar::ORBE::view {

struct Growth_Patience {
    // When nothing has been written for so long, all that there is can be shown.
    std::chrono::milliseconds settled{1'000};
    // And after so long nothing more is waited for. A disk may stall for six seconds.
    std::chrono::milliseconds finished{10'000};
    // So often who reads looks for more, and so often behind that.
    std::chrono::milliseconds look{20};
    std::chrono::milliseconds later_look{1'000};
};

// By the clock of the file system. Where it tells the time of a file only when that is closed, the first
// growth tells.
inline bool was_written_within(std::chrono::milliseconds time, const std::filesystem::path& file) {
    std::error_code error;
    const auto written_at = std::filesystem::last_write_time(file, error);
    return !error && std::filesystem::file_time_type::clock::now() - written_at < time;
}

} // namespace Pelgar::ORBE::view
