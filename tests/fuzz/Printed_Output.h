// Fuzzing: keeps what the library prints while it lives, in memory, so that a target can compare it and
// nothing of it reaches the terminal. Log lines are dropped. Made and destroyed while no other thread prints.
#pragma once

#include <cstddef>
#include <cstdio>
#include <string>

namespace Pelgar::ORBE::test {

class Printed_Output {
public:
    Printed_Output();
    ~Printed_Output();
    Printed_Output(const Printed_Output&) = delete;
    Printed_Output& operator=(const Printed_Output&) = delete;

    // What came on standard output and on standard error since the last `take` of either.
    std::string take_out() { return m_out.take(); }

    std::string take_err() { return m_err.take(); }

private:
    // A stream that grows in memory.
    class Memory {
    public:
        Memory();
        ~Memory();
        Memory(const Memory&) = delete;
        Memory& operator=(const Memory&) = delete;

        std::FILE* stream() const { return m_stream; }

        std::string take();

    private:
        char* m_text = nullptr;
        std::size_t m_size = 0;
        std::FILE* m_stream;
    };

    Memory m_out;
    Memory m_err;
    std::FILE* m_stdout;
    std::FILE* m_stderr;
};

} // namespace Pelgar::ORBE::test
