#include "formats/Gap_Table.h"

#include "description/Whole_File.h"

#include <cerrno>

namespace Pelgar::ORBE::recorder {

Gap_Table::Gap_Table(const std::filesystem::path& folder) : m_path(folder / gap_table_file_name) {
    errno = 0;
    m_file.open(m_path, std::ios::binary | std::ios::trunc);
    write(gap_table_head);
}

void Gap_Table::add(const std::string& stream, std::uint64_t sample, std::uint64_t length) {
    const std::lock_guard lock(m_mutex);
    write(stream + "," + std::to_string(sample) + "," + std::to_string(length) + "\n");
}

std::uint64_t Gap_Table::size() const {
    const std::lock_guard lock(m_mutex);
    return m_size;
}

void Gap_Table::write(const std::string& text) {
    errno = 0;
    if (!(m_file << text << std::flush)) {
        throw file_error(m_path, "cannot write");
    }
    m_size += text.size();
}

} // namespace Pelgar::ORBE::recorder
