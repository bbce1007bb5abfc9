#include "formats/Data_File.h"

#include "description/Whole_File.h"

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

namespace Pelgar::ORBE::recorder {

namespace {

constexpr std::uint64_t smallest_hole = 1U << 20U;

} // namespace

char* Data_File::append(std::size_t bytes) {
    const std::size_t place = m_fill;
    if (place + bytes > m_capacity) {
        const std::size_t capacity = std::max(2 * m_capacity, place + bytes);
        auto buffer = std::make_unique_for_overwrite<char[]>(capacity);
        std::copy_n(m_buffer.get(), place, buffer.get());
        m_buffer = std::move(buffer);
        m_capacity = capacity;
    }
    m_fill += bytes;
    return m_buffer.get() + place;
}

void Data_File::append_zeros(std::uint64_t bytes) {
    if (bytes < smallest_hole) {
        std::fill_n(append(static_cast<std::size_t>(bytes)), bytes, '\0');
        return;
    }
    flush();
    m_hole += bytes;
}

void Data_File::flush() {
    if (m_fill == 0) {
        return;
    }
    write_at(m_written + m_hole, m_buffer.get(), m_fill);
    m_written += m_hole + m_fill;
    m_hole = 0;
    m_fill = 0;
}

void Data_File::overwrite(std::uint64_t offset, std::string_view bytes) {
    write_at(offset, bytes.data(), bytes.size());
}

void Data_File::close() {
    flush();
    errno = 0;
    if (m_file.is_open() && m_file.close() == nullptr) {
        throw file_error(m_path, "cannot write");
    }
}

void Data_File::write_at(std::uint64_t offset, const char* bytes, std::size_t count) {
    errno = 0;
    if (!m_file.is_open()) {
        m_file.pubsetbuf(nullptr, 0);
        if (m_file.open(m_path, std::ios::out | std::ios::binary | std::ios::trunc) == nullptr) {
            throw file_error(m_path, "cannot write");
        }
    } else if (std::error_code error; !std::filesystem::exists(m_path, error)) {
        // The system would go on writing into what nobody can find any more.
        throw std::system_error(std::make_error_code(std::errc::no_such_file_or_directory),
                                "'" + m_path.string() + "' has been taken away");
    }
    const auto place = m_file.pubseekpos(static_cast<std::streamoff>(offset), std::ios::out);
    if (place == std::filebuf::pos_type(std::filebuf::off_type(-1)) ||
        m_file.sputn(bytes, static_cast<std::streamsize>(count)) != static_cast<std::streamsize>(count)) {
        throw file_error(m_path, "cannot write");
    }
}

} // namespace Pelgar::ORBE::recorder
