// Program orbe-play. How one stream of packets has come out. The atomic counters are written by the stream's
// threads and looked at by the main thread; the rest is read after the threads have ended.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>

namespace Pelgar::ORBE::recording {

struct Reader_Result {
    std::uint64_t expected = 0;
    std::atomic<std::uint64_t> received{0};
    std::atomic<std::uint64_t> compared{0};

    std::uint64_t equal = 0;
    std::string first_difference; // empty: none
    bool surplus = false;         // more packets came than were expected
    std::string error;            // why the comparison was given up; empty: it was not

    // Whether all has come; it may not have been compared yet.
    bool complete() const { return received == expected; }

    bool good(bool verify) const {
        return complete() && !surplus && error.empty() && (!verify || equal == expected);
    }
};

} // namespace Pelgar::ORBE::recording
