#include "Row_Pipe.h"

#include <cerrno>
#include <system_error>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Pelgar::ORBE::test {

namespace {

constexpr std::size_t written_at_once = std::size_t{1} << 18U;
// The most that an ordinary user may ask for.
constexpr int pipe_bytes = 1 << 20;
constexpr int longest_wait_ms = 10;

} // namespace

Row_Pipe::Row_Pipe(std::string path, const Endless_Options& options, const Stream_Enables& enables)
    : m_path(std::move(path)), m_enables(enables), m_rows(options) {
    if (mkfifo(m_path.c_str(), 0600) != 0) {
        throw std::system_error(errno, std::generic_category(), m_path);
    }
    // Open for reading as well, so that it is open before the library reads and the library sees no end.
    m_descriptor = open(m_path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    if (m_descriptor < 0) {
        throw std::system_error(errno, std::generic_category(), m_path);
    }
    fcntl(m_descriptor, F_SETPIPE_SZ, pipe_bytes);
    m_thread = std::thread(&Row_Pipe::run, this);
}

Row_Pipe::~Row_Pipe() {
    m_ending = true;
    m_thread.join();
    close(m_descriptor);
    unlink(m_path.c_str());
}

void Row_Pipe::run() {
    std::vector<std::uint8_t> bytes;
    while (!m_ending) {
        bytes.clear();
        while (bytes.size() < written_at_once) {
            m_rows.make_tick(m_enables);
            const auto tick = m_rows.take(written_at_once);
            bytes.insert(bytes.end(), tick.begin(), tick.end());
        }
        for (std::size_t written = 0; written < bytes.size() && !m_ending;) {
            const ssize_t now = write(m_descriptor, bytes.data() + written, bytes.size() - written);
            if (now > 0) {
                written += static_cast<std::size_t>(now);
            } else {
                pollfd writable{.fd = m_descriptor, .events = POLLOUT, .revents = 0};
                poll(&writable, 1, longest_wait_ms);
            }
        }
    }
}

} // namespace Pelgar::ORBE::test
