#include "Slow_Recording.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace Pelgar::ORBE::test {

namespace {

constexpr std::size_t most_bytes_a_write = 65536;
constexpr auto poll_interval = std::chrono::milliseconds(1);

std::vector<char> content_of(const std::string& name) {
    std::ifstream file(name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

} // namespace

// Open for reading as well, so that neither end waits for the other one to be opened, and without blocking,
// so that a reader that has gone keeps nobody waiting.
Slow_Recording::Slow_Recording(const std::string& name, std::size_t bytes_at_once)
    : m_content(content_of(name)), m_bytes_at_once(std::min(bytes_at_once, m_content.size())) {
    std::filesystem::remove(name);
    if (mkfifo(name.c_str(), 0600) != 0 || (m_descriptor = ::open(name.c_str(), O_RDWR | O_NONBLOCK)) < 0) {
        throw std::system_error(errno, std::generic_category(), name);
    }
    m_thread = std::thread(&Slow_Recording::run, this);
}

Slow_Recording::~Slow_Recording() {
    m_is_ending = true;
    hand_out_the_rest();
    m_thread.join();
    if (m_descriptor >= 0) {
        ::close(m_descriptor);
    }
}

bool Slow_Recording::keeps_waiting() const {
    int unread = 0;
    return m_has_paused && ::ioctl(m_descriptor, FIONREAD, &unread) == 0 && unread == 0;
}

void Slow_Recording::hand_out_the_rest() {
    const std::lock_guard lock(m_mutex);
    m_has_paused = false;
    m_goes_on = true;
    m_may_go_on.notify_all();
}

void Slow_Recording::run() {
    if (!write(m_bytes_at_once)) {
        return;
    }
    {
        std::unique_lock lock(m_mutex);
        m_has_paused = !m_goes_on;
        m_may_go_on.wait(lock, [this] { return m_goes_on; });
    }
    if (write(m_content.size())) {
        // The reader sees the end.
        ::close(m_descriptor);
        m_descriptor = -1;
    }
}

bool Slow_Recording::write(std::size_t end) {
    while (m_written < end) {
        const ssize_t written = ::write(m_descriptor, m_content.data() + m_written,
                                        std::min(end - m_written, most_bytes_a_write));
        if (written > 0) {
            m_written += static_cast<std::size_t>(written);
        } else if (m_is_ending) {
            return false;
        } else {
            std::this_thread::sleep_for(poll_interval);
        }
    }
    return true;
}

} // namespace Pelgar::ORBE::test
