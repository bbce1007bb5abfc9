// How a recording is played: which of its pieces are shown, and what is said of it.
#include "sources/Recording_Source.h"

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <vector>

namespace Pelgar::ORBE::view {

namespace {

constexpr std::uint64_t piece_samples = 600;

// What the recording is, and what has become of it. Outlives it.
struct Script {
    std::mutex mutex;
    std::size_t pieces = 0;
    bool grows = false;
    double known_part = 1.0;
    std::string problem;
    std::optional<std::size_t> fails_at;
    std::vector<std::size_t> begun; // the pieces with which it was begun
    std::size_t next = 0;

    template <typename Look>
    auto with(Look&& look) {
        const std::lock_guard lock(mutex);
        return look(*this);
    }
};

// Of no stream: only its pieces count.
class Scripted_Recording final : public A_Recording {
public:
    explicit Scripted_Recording(Script& script) : m_script(script) {}

    std::string name() const override { return "scripted"; }

    const recorder::Recording_Description& description() const override { return m_description; }

    bool grows() const override {
        return m_script.with([](Script& script) { return script.grows; });
    }

    std::string problem() const override {
        return m_script.with([](Script& script) { return script.problem; });
    }

    std::size_t size() const override {
        return m_script.with([](Script& script) { return script.pieces; });
    }

    std::optional<std::uint64_t> begin_of(std::size_t piece) const override {
        return piece < size() ? std::optional(piece * piece_samples) : std::nullopt;
    }

    std::size_t piece_of(std::uint64_t sample) const override {
        return std::min<std::size_t>(static_cast<std::size_t>(sample / piece_samples), size() - 1);
    }

    std::uint64_t length() const override { return size() * piece_samples; }

    double known_part() const override {
        return m_script.with([](Script& script) { return script.known_part; });
    }

    std::vector<Damage_Counts> damage(std::size_t stretches) const override {
        return std::vector<Damage_Counts>(stretches, Damage_Counts{1, 0, 0, 0, 0});
    }

    std::uint64_t burst() const override { return 0; }

    void look() override {}

    void begin(std::size_t piece, Histories& /*histories*/) override {
        m_script.with([&](Script& script) {
            script.begun.push_back(piece);
            script.next = piece;
        });
    }

    bool show_next(Histories& /*histories*/) override {
        return m_script.with([](Script& script) {
            if (script.fails_at == script.next) {
                throw std::runtime_error("the disk is gone");
            }
            return script.next < script.pieces && ++script.next != 0;
        });
    }

    std::size_t next() const override {
        return m_script.with([](Script& script) { return script.next; });
    }

    Health health_of(std::size_t /*begin*/, std::size_t end, const Histories& /*histories*/) override {
        Health health;
        health.seconds = static_cast<double>(end * piece_samples) / recorder::ap_sample_rate;
        return health;
    }

private:
    Script& m_script;
    recorder::Recording_Description m_description;
};

class Played : public testing::Test {
protected:
    void open(std::size_t pieces, bool grows = false) {
        script.pieces = pieces;
        script.grows = grows;
        source = std::make_unique<Recording_Source>(std::make_unique<Scripted_Recording>(script), 100.0);
    }

    void wait_until(const std::function<bool(const Source_Status&)>& is_so) const {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
        while (!is_so(source->status())) {
            ASSERT_LT(std::chrono::steady_clock::now(), end);
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }

    std::size_t next() {
        return script.with([](Script& each) { return each.next; });
    }

    std::vector<std::size_t> begun() {
        return script.with([](Script& each) { return each.begun; });
    }

    Script script;
    std::unique_ptr<Recording_Source> source;
};

} // namespace

TEST_F(Played, ShowsAFinishedRecordingFromItsBeginningToItsEnd) {
    open(10); // 0.2 s
    wait_until([](const Source_Status& status) { return status.position == 6000; });
    EXPECT_EQ(next(), 10U);
    EXPECT_EQ(begun(), std::vector<std::size_t>{0});
    const Source_Status status = source->status();
    EXPECT_EQ(status.name, "scripted");
    EXPECT_EQ(status.kind, "recording");
    EXPECT_TRUE(status.can_jump);
    EXPECT_TRUE(status.is_playing);
    EXPECT_DOUBLE_EQ(status.length, 0.2);
    EXPECT_EQ(status.problem, "");
    EXPECT_FALSE(source->stream(false)); // there is no box
    EXPECT_EQ(source->damage(3).size(), 3U);
}

TEST_F(Played, ShowsTheSecondsBeforeAPlaceThatIsJumpedTo) {
    open(500); // 10 s
    source->jump(8.0, false);
    wait_until([this](const Source_Status& status) { return status.position == 240'000 && next() == 401; });
    EXPECT_FALSE(source->status().is_playing);
    EXPECT_EQ(begun().back(), 250U); // 3 s before
    // Near the beginning there is less, behind the end nothing.
    source->jump(1.0, false);
    wait_until([this](const Source_Status& status) { return status.position == 30'000 && next() == 51; });
    EXPECT_EQ(begun().back(), 0U);
    source->jump(99.0, false);
    wait_until([this](const Source_Status& status) { return status.position == 300'000 && next() == 500; });
    source->jump(-5.0, false);
    wait_until([this](const Source_Status& status) { return status.position == 0 && next() == 1; });
    // Health of every half second that was shown.
    source->jump(8.0, false);
    wait_until([this](const Source_Status& status) { return status.position == 240'000 && next() == 401; });
    EXPECT_EQ(source->histories().health().report().lines.size(), 6U);
    EXPECT_DOUBLE_EQ(source->histories().health().report().lines.front().seconds, 5.5);
}

TEST_F(Played, GoesOnOnlyWhileItPlays) {
    open(500);
    source->jump(2.0, false);
    wait_until([](const Source_Status& status) { return status.position == 60'000; });
    source->play(true);
    wait_until([](const Source_Status& status) { return status.position > 61'000; });
    source->play(false);
    EXPECT_FALSE(source->status().is_playing);
    // What was under way when it was stopped may still come; then it stands still.
    std::uint64_t position = 0;
    wait_until([&](const Source_Status& status) {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        return std::exchange(position, status.position) == status.position;
    });
    EXPECT_LT(position, 300'000U);
}

TEST_F(Played, FollowsTheEndOfOneThatGrows) {
    open(100, true);
    wait_until([this](const Source_Status& status) { return status.position == 60'000 && next() == 100; });
    EXPECT_EQ(source->status().kind, "growing");
    for (std::size_t pieces : {101U, 140U}) {
        script.with([&](Script& each) { each.pieces = pieces; });
        wait_until([&](const Source_Status& status) {
            return status.position == pieces * piece_samples && next() == pieces;
        });
    }
    // Away from the end it plays, and back there it follows again.
    source->jump(0.5, false);
    wait_until([](const Source_Status& status) { return status.position == 15'000; });
    source->jump(2.8, true);
    wait_until([this](const Source_Status& status) { return status.position == 84'000 && next() == 140; });
    script.with([](Script& each) { each.pieces = 1000; });
    wait_until([this](const Source_Status& status) { return status.position == 600'000 && next() == 1000; });
    script.with([](Script& each) { each.grows = false; });
    EXPECT_EQ(source->status().kind, "recording");
}

TEST_F(Played, WaitsUntilTheEndOfOneThatGrowsIsKnown) {
    script.known_part = 0.5;
    open(100, true);
    EXPECT_EQ(source->status().known_part, 0.5);
    EXPECT_TRUE(begun().empty());
    script.with([](Script& each) {
        each.known_part = 1.0;
        each.pieces = 200;
    });
    wait_until([this](const Source_Status& status) { return status.position == 120'000 && next() == 200; });
    EXPECT_EQ(begun(), std::vector<std::size_t>{50});
}

TEST_F(Played, SaysWhatIsWrong) {
    script.problem = "a line is damaged";
    open(10);
    wait_until([](const Source_Status& status) { return status.position == 6000; });
    EXPECT_EQ(source->status().problem, "a line is damaged");
    script.with([](Script& each) { each.fails_at = 3; });
    source->jump(0.0, true);
    wait_until([](const Source_Status& status) { return status.problem == "the disk is gone"; });
}

TEST_F(Played, EndsWhileNothingIsKnownYet) {
    open(0);
    EXPECT_EQ(source->status().position, 0U);
    source->jump(3.0, true);
    source.reset();
    EXPECT_TRUE(begun().empty());
}

} // namespace Pelgar::ORBE::view
