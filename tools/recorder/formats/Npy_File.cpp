#include "formats/Npy_File.h"

namespace Pelgar::ORBE::recorder {

std::string npy_head(const std::string& type, std::uint64_t count) {
    using namespace std::string_literals;
    // The mark, version 1.0, and the length of what follows in two bytes.
    std::string head = "\x93NUMPY\x01\x00\x76\x00"s;
    static_assert(npy_head_size - 10 == 0x76);
    head += "{'descr': '" + type + "', 'fortran_order': False, 'shape': (" + std::to_string(count) + ",), }";
    head.resize(npy_head_size - 1, ' ');
    return head + "\n";
}

void Npy_File::begin() {
    if (m_file.size() == 0) {
        const std::string head = npy_head(m_type, 0);
        std::memcpy(m_file.append(head.size()), head.data(), head.size());
    }
}

void Npy_File::flush() {
    begin();
    m_file.flush();
    if (m_told != m_count) {
        m_file.overwrite(0, npy_head(m_type, m_count));
        m_told = m_count;
    }
}

void Npy_File::close() {
    flush();
    m_file.close();
}

} // namespace Pelgar::ORBE::recorder
