#include "Paced_Recording.h"

#include "stream_format/Piece_Reader.h"

#include <cerrno>
#include <chrono>
#include <stdexcept>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Pelgar::ORBE::recording {

namespace {

constexpr mode_t owner_only = 0600;
constexpr std::chrono::milliseconds look_interval{1};
constexpr int poll_milliseconds = 50;

// Both ends are opened at once, so that neither this program nor the library waits for the other's opening.
int open_pipe(const std::filesystem::path& pipe) {
    if (mkfifo(pipe.c_str(), owner_only) == 0) {
        const int descriptor = open(pipe.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
        if (descriptor >= 0) {
            return descriptor;
        }
    }
    throw std::runtime_error("cannot make the pipe '" + pipe.string() +
                             "': " + std::generic_category().message(errno));
}

} // namespace

Paced_Recording::Paced_Recording(std::filesystem::path recording, std::filesystem::path pipe)
    : m_recording(std::move(recording)), m_pipe(std::move(pipe)), m_descriptor(open_pipe(m_pipe)) {}

Paced_Recording::~Paced_Recording() {
    stop();
}

void Paced_Recording::start(std::function<bool(const Packet_Counts&)> taken) {
    m_taken = std::move(taken);
    m_writer = std::thread([this] { write_all(); });
}

void Paced_Recording::stop() {
    m_stop = true;
    if (m_writer.joinable()) {
        m_writer.join();
    }
    if (m_descriptor >= 0) {
        close(m_descriptor);
        m_descriptor = -1;
    }
}

void Paced_Recording::write_all() {
    try {
        Piece_Reader reader{m_recording};
        Packet_Counts counts;
        while (!m_stop && reader.next()) {
            if (!write(reader.piece())) {
                return;
            }
            counts.add_piece(reader.piece());
            while (!m_stop && !m_taken(counts)) {
                std::this_thread::sleep_for(look_interval);
            }
        }
    } catch (const std::exception&) {
        // What cannot be read does not arrive, and the player says so.
        return;
    }
}

// False when the writing was stopped before the piece was through.
bool Paced_Recording::write(std::span<const std::uint8_t> piece) const {
    while (!piece.empty()) {
        const ssize_t written = ::write(m_descriptor, piece.data(), piece.size());
        if (written > 0) {
            piece = piece.subspan(static_cast<std::size_t>(written));
            continue;
        }
        if (m_stop) {
            return false;
        }
        pollfd room{m_descriptor, POLLOUT, 0};
        poll(&room, 1, poll_milliseconds);
    }
    return true;
}

} // namespace Pelgar::ORBE::recording
