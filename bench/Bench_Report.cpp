#include "Bench_Report.h"

#include <loguru.hpp>

#include <cstdio>
#include <ostream>
#include <streambuf>

#if defined(_WIN32)
#include <io.h>
#define ORBE_DUP _dup
#define ORBE_FDOPEN _fdopen
#define ORBE_FILENO _fileno
constexpr const char* null_device = "NUL";
#else
#include <unistd.h>
#define ORBE_DUP dup
#define ORBE_FDOPEN fdopen
#define ORBE_FILENO fileno
constexpr const char* null_device = "/dev/null";
#endif

namespace Pelgar::ORBE::bench {

namespace {

// An unbuffered stream buffer on a C file.
class C_File_Buffer : public std::streambuf {
public:
    explicit C_File_Buffer(std::FILE* file) : m_file(file) {}

protected:
    int_type overflow(int_type character) override {
        return traits_type::eq_int_type(character, traits_type::eof()) ? traits_type::not_eof(character)
                                                                       : std::fputc(character, m_file);
    }

    std::streamsize xsputn(const char* text, std::streamsize count) override {
        return static_cast<std::streamsize>(std::fwrite(text, 1, static_cast<std::size_t>(count), m_file));
    }

    int sync() override { return std::fflush(m_file); }

private:
    std::FILE* m_file;
};

} // namespace

void report_stream_rate(benchmark::State& state, std::size_t stream_bytes_per_iteration) {
    const double bytes =
        static_cast<double>(stream_bytes_per_iteration) * static_cast<double>(state.iterations());
    state.counters[stream_rate_counter] = benchmark::Counter(bytes, benchmark::Counter::kIsRate);
}

std::ostream& silence_library() {
    loguru::g_stderr_verbosity = loguru::Verbosity_ERROR;
    std::fflush(stdout);
    static C_File_Buffer buffer(ORBE_FDOPEN(ORBE_DUP(ORBE_FILENO(stdout)), "w"));
    static std::ostream report(&buffer);
    std::fflush(stderr);
    if (std::freopen(null_device, "w", stdout) == nullptr ||
        std::freopen(null_device, "w", stderr) == nullptr) {
        report << "the library's messages could not be silenced\n";
    }
    return report;
}

} // namespace Pelgar::ORBE::bench
