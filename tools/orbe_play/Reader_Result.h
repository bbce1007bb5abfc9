// Program orbe-play. How one stream of packets has come out. The counters are written by the stream's reader
// thread and looked at by the main thread; the rest is read after the reader has ended.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>

namespace Pelgar::ORBE::recording {

struct Reader_Result {
    // Set when all expected packets have come, and when the reader has nothing more to wait for.
    std::atomic<bool> complete{false};
    std::atomic<bool> ended{false};
    // Packets that have come, and how far into the recording the reader is, in bytes.
    std::atomic<std::uint64_t> received{0};
    std::atomic<std::uint64_t> bytes{0};

    std::uint64_t expected = 0; // all of them once `complete` is set, else those that were known
    std::uint64_t equal = 0;
    std::string first_difference; // empty: none
    bool surplus = false;         // more packets came than were expected
    std::string error;            // why the reader gave up; empty: it did not

    bool good(bool verify) const {
        return complete && !surplus && error.empty() && received == expected &&
               (!verify || equal == expected);
    }
};

} // namespace Pelgar::ORBE::recording
