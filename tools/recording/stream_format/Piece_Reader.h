// Tools, recording library. Reads a recording as the simulation does: in pieces of 1 MiB, of which a shorter
// last one does not count. Blocks on the disk; holds one piece.
#pragma once

#include "stream_format/Wire_Format.h"

#include <cstdint>
#include <filesystem>
#include <istream>
#include <memory>
#include <span>
#include <vector>

namespace Pelgar::ORBE::recording {

class Piece_Reader {
public:
    // Throws std::runtime_error("cannot read '<path>': <reason>") when the file cannot be opened or is none.
    explicit Piece_Reader(const std::filesystem::path& path);
    explicit Piece_Reader(std::unique_ptr<std::istream> stream);

    // Reads the next piece; false when no whole piece is left. Throws std::runtime_error when the disk fails.
    bool next();

    // The piece that was read, valid until the next call of `next`.
    std::span<const std::uint8_t> piece() const { return m_piece; }

    // The bytes of all pieces so far.
    std::uint64_t bytes_read() const { return m_bytes_read; }

    // What lies after the last whole piece, once `next` has answered false.
    std::span<const std::uint8_t> rest() const { return {m_piece.data(), m_rest}; }

private:
    std::filesystem::path m_path;
    std::unique_ptr<std::istream> m_stream;
    std::vector<std::uint8_t> m_piece;
    std::size_t m_rest = 0;
    std::uint64_t m_bytes_read = 0;
};

} // namespace Pelgar::ORBE::recording
