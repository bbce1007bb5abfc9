// Test support, virtual box. The card-to-host stream: answers reads with the rows of the enabled data
// sources, as fast as it is read but no further than it is allowed. `read` runs on the pump thread and
// blocks; everything else on any thread.
#pragma once

#include "A_Row_Source.h"
#include "DMA_Read_Fault.h"
#include "Stream_Enables.h"

#include "generator/Recording_Options.h"

#include <array>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <limits>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <span>

namespace Pelgar::ORBE::test {

class DMA_Source {
public:
    static constexpr std::uint64_t unlimited = std::numeric_limits<std::uint64_t>::max();

    // The rows are those of a Row_Source with these options, or of any other source.
    explicit DMA_Source(recording::Recording_Options options);
    explicit DMA_Source(std::unique_ptr<A_Row_Source> rows);

    // ---- The box's side.

    void enable(const Stream_Enables& enables);
    void restart_probe(std::size_t port);
    void reset();

    // A read that blocks returns what it has when the connection closes.
    void set_connected(bool connected);
    void setup_read(std::uint8_t* buffer, std::uint32_t size);

    // Fills the buffer, or, when not `complete`, returns with the first bytes. Returns early, with what is
    // there, when the sources are switched off; at once when nothing is on.
    std::uint32_t read(bool complete);

    // ---- The test's side.

    // So many ticks (super frames of every enabled port, RHD frames) may be made in all since the box was
    // built. A read that needs more waits.
    void set_limit(std::uint64_t ticks);
    std::uint64_t ticks() const;

    // Whether a read waits for the limit to rise.
    bool is_held_back() const;

    // Reads are counted from 1.
    void fail_read(std::uint64_t read, DMA_Read_Fault fault);
    std::uint64_t reads() const;

    // Whether a read does not end, and what ends it.
    bool is_stalled() const;
    void release_stalled_read();

    // Sees the bytes of every read, on the pump thread, before the read returns.
    using Observer = std::function<void(std::span<const std::uint8_t>)>;
    void set_observer(Observer observer);

private:
    // What the registers have changed since the row source was last told.
    struct Changes {
        bool reset = false;
        std::array<bool, box_port_count> restarted{};
    };

    struct Tick {
        Stream_Enables enables;
        Changes changes;
    };

    std::optional<DMA_Read_Fault> begin_read();
    std::optional<DMA_Read_Fault> fault_of_this_read() const;
    void stall();
    std::uint32_t fill(std::uint32_t size, bool complete);
    std::optional<Tick> next_tick(std::uint64_t stops, bool wait);
    void apply(const Changes& changes);

    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    Stream_Enables m_enables;
    Changes m_changes;
    bool m_connected = false;
    std::uint64_t m_stops = 0; // how often the sources were switched off or the connection closed
    std::uint64_t m_ticks = 0;
    std::uint64_t m_limit = unlimited;
    bool m_held_back = false;
    std::uint64_t m_reads = 0;
    bool m_stalled = false;
    std::map<std::uint64_t, DMA_Read_Fault> m_faults;
    Observer m_observer;
    std::uint8_t* m_buffer = nullptr;
    std::uint32_t m_size = 0;

    std::mutex m_read_mutex; // held while a read is under way; guards the rows
    std::unique_ptr<A_Row_Source> m_rows;
};

} // namespace Pelgar::ORBE::test
