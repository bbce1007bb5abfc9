// Benchmarks: an unbuffered stream buffer on a file descriptor, for the report while standard output is
// elsewhere.
#pragma once

#include <streambuf>

namespace Pelgar::ORBE::bench {

class Descriptor_Buffer : public std::streambuf {
public:
    explicit Descriptor_Buffer(int descriptor) : m_descriptor(descriptor) {}

    // Why the last write has failed, as errno.
    int error() const { return m_error; }

protected:
    int_type overflow(int_type character) override;
    std::streamsize xsputn(const char* text, std::streamsize count) override;

private:
    int m_descriptor;
    int m_error = 0;
};

} // namespace Pelgar::ORBE::bench
