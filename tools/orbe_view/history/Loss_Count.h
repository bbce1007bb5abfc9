// Program orbe-view, history. Counts the samples that a stream has lost. Whoever holds it sees to it that one
// thread at a time uses it; nothing blocks.
#pragma once

#include <cstdint>
#include <map>

namespace Pelgar::ORBE::view {

class Loss_Count {
public:
    // A sample has come. Answers how many are lost between it and the one before.
    std::uint64_t come(std::uint64_t number);

    // So many from number `first` on are known to be lost.
    void lose(std::uint64_t first, std::uint64_t count);

    // What comes next is of another time.
    void jump();

    // And its numbers are those of other samples.
    void begin_anew();

    // As often as they were passed.
    std::uint64_t passed() const { return m_passed; }

    // Each once, however often a jump led there.
    std::uint64_t different() const { return m_different; }

private:
    void begin_with(std::uint64_t number);
    void count(std::uint64_t begin, std::uint64_t end);

    std::uint64_t m_passed = 0;
    std::uint64_t m_different = 0;
    bool m_has_begun = false; // since the last jump
    std::uint64_t m_begin = 0;
    std::uint64_t m_next = 0;
    std::map<std::uint64_t, std::uint64_t> m_before; // beginnings and ends of what was passed before that
};

} // namespace Pelgar::ORBE::view
