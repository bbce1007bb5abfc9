#include "folders/Sample_File.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace Pelgar::ORBE::view {

Sample_File::Sample_File(std::filesystem::path path, std::size_t row_length)
    : m_path(std::move(path)), m_row_length(row_length) {}

// The end of the open file is its true one; what a folder says of it can be old.
bool Sample_File::look() {
    if (!m_file.is_open()) {
        m_file.open(m_path, std::ios::binary);
        if (!m_file.is_open()) {
            return false;
        }
    }
    m_file.clear();
    m_file.seekg(0, std::ios::end);
    const std::streamoff bytes = m_file.tellg();
    const std::uint64_t rows = static_cast<std::uint64_t>(std::max<std::streamoff>(bytes, 0)) /
                               (m_row_length * sizeof(std::int16_t));
    if (rows <= m_rows) {
        return false;
    }
    m_rows_before = m_rows;
    m_rows = rows;
    return true;
}

void Sample_File::read(std::uint64_t first, std::span<std::int16_t> destination) {
    m_file.clear();
    m_file.seekg(static_cast<std::streamoff>(first * m_row_length * sizeof(std::int16_t)));
    const auto bytes = static_cast<std::streamsize>(destination.size_bytes());
    m_file.read(reinterpret_cast<char*>(destination.data()), bytes);
    if (m_file.gcount() != bytes) {
        throw std::runtime_error("cannot read '" + m_path.string() + "' any further");
    }
}

} // namespace Pelgar::ORBE::view
