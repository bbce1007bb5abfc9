// Program orbe-view, sources. A recording, whole or still growing, that is played for all pages together: a
// thread shows it at the pace of its time, and as fast as it can after a jump and behind the end of a growing
// one.
#pragma once

#include "sources/A_Recording.h"
#include "sources/A_Source.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

namespace Pelgar::ORBE::view {

class Recording_Source final : public A_Source {
public:
    // A spike is a fall below the channel's mean by so many microvolts.
    Recording_Source(std::unique_ptr<A_Recording> recording, double spike_microvolts);
    ~Recording_Source() override;

    const Histories& histories() const override { return m_histories; }

    Source_Status status() const override;
    void jump(double seconds, bool plays) override;
    void play(bool plays) override;

    std::vector<Damage_Counts> damage(std::size_t stretches) const override {
        return m_recording->damage(stretches);
    }

private:
    using Clock = std::chrono::steady_clock;

    struct Jump {
        std::uint64_t sample;
        bool follows; // to the end instead, wherever it is, and on with it
    };

    void run();
    void run_until_stopped();
    std::optional<Jump> take_jump();
    void begin(const Jump& jump);
    bool advance();
    void follow_health(std::size_t piece);
    void wait(std::chrono::milliseconds time);

    const std::unique_ptr<A_Recording> m_recording;
    Histories m_histories;

    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    std::optional<Jump> m_jump; // asked for
    bool m_plays = true;
    bool m_stops = false;
    std::string m_problem;

    std::atomic<std::uint64_t> m_position{0};

    // Of the thread.
    bool m_has_begun = false;
    std::uint64_t m_target = 0;      // shown as fast as possible up to here
    bool m_follows = false;          // the end of a growing recording
    Clock::time_point m_anchor_time; // when sample m_anchor_sample is due
    std::uint64_t m_anchor_sample = 0;
    bool m_was_playing = false;
    std::size_t m_health_piece = 0;

    std::thread m_thread; // last: it uses the others
};

} // namespace Pelgar::ORBE::view
