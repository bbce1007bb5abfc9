#include "stream_format/Piece_Reader.h"

#include <cerrno>
#include <fstream>
#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>

namespace Pelgar::ORBE::recording {

namespace {

[[noreturn]] void fail(const std::filesystem::path& path, int error) {
    throw std::runtime_error("cannot read '" + path.string() +
                             "': " + std::generic_category().message(error));
}

std::unique_ptr<std::istream> open(const std::filesystem::path& path) {
    std::error_code error;
    if (std::filesystem::is_directory(path, error)) {
        fail(path, EISDIR);
    }
    auto file = std::make_unique<std::ifstream>();
    // Whole pieces are read at once; a buffer in between would only copy them.
    file->rdbuf()->pubsetbuf(nullptr, 0);
    errno = 0;
    file->open(path, std::ios::binary);
    if (!file->is_open()) {
        fail(path, errno != 0 ? errno : EIO);
    }
    return file;
}

} // namespace

Piece_Reader::Piece_Reader(const std::filesystem::path& path)
    : m_path(path), m_stream(open(path)), m_piece(piece_bytes) {}

Piece_Reader::Piece_Reader(std::unique_ptr<std::istream> stream)
    : m_path("stream"), m_stream(std::move(stream)), m_piece(piece_bytes) {}

bool Piece_Reader::next() {
    if (!m_stream->good()) {
        return false;
    }
    errno = 0;
    m_stream->read(static_cast<char*>(static_cast<void*>(m_piece.data())), piece_bytes);
    const auto count = static_cast<std::size_t>(m_stream->gcount());
    if (count == piece_bytes) {
        m_bytes_read += piece_bytes;
        return true;
    }
    if (m_stream->bad()) {
        fail(m_path, errno != 0 ? errno : EIO);
    }
    m_rest = count;
    return false;
}

} // namespace Pelgar::ORBE::recording
