#include "Printed_Output.h"

#include <loguru.hpp>

#include <cstdlib>
#include <stdexcept>
#include <utility>

namespace Pelgar::ORBE::test {

// A temporary file would cost more than most inputs do, so the streams of the C library are exchanged.
Printed_Output::Printed_Output()
    : m_stdout(std::exchange(stdout, m_out.stream())), m_stderr(std::exchange(stderr, m_err.stream())) {
    loguru::g_stderr_verbosity = loguru::Verbosity_OFF;
}

Printed_Output::~Printed_Output() {
    stdout = m_stdout;
    stderr = m_stderr;
}

Printed_Output::Memory::Memory() : m_stream(open_memstream(&m_text, &m_size)) {
    if (m_stream == nullptr) {
        throw std::runtime_error("no memory for a stream");
    }
}

Printed_Output::Memory::~Memory() {
    std::fclose(m_stream);
    std::free(m_text);
}

std::string Printed_Output::Memory::take() {
    std::fflush(m_stream);
    std::string text(m_text, m_size);
    std::fseek(m_stream, 0, SEEK_SET);
    return text;
}

} // namespace Pelgar::ORBE::test
