// Tools, recorder. A file that grows while the box streams: what is appended is kept until `flush`, which
// writes it at once. The file is made by the first flush that has something to write. The stream's thread;
// `flush` blocks on the disk.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string_view>

namespace Pelgar::ORBE::recorder {

class Data_File {
public:
    explicit Data_File(std::filesystem::path path) : m_path(std::move(path)) {}

    Data_File(const Data_File&) = delete;
    Data_File& operator=(const Data_File&) = delete;

    // Room for so many bytes behind what is there already, to be filled; valid until the next call.
    char* append(std::size_t bytes);

    // So many zeros. Many of them become a hole, which takes no time and, where the file system knows holes,
    // no room. Something else must follow them.
    void append_zeros(std::uint64_t bytes);

    // Throws std::system_error with the file's name when the disk will not have it, or when the file has been
    // taken away; what could not be written is kept for another try.
    void flush();

    // Writes into what is there already. After a flush that has written something.
    void overwrite(std::uint64_t offset, std::string_view bytes);

    // Flushes and closes.
    void close();

    // What has been appended so far.
    std::uint64_t size() const { return m_written + m_hole + m_fill; }

    // What a flush would write.
    std::size_t buffered() const { return m_fill; }

private:
    void write_at(std::uint64_t offset, const char* bytes, std::size_t count);

    std::filesystem::path m_path;
    std::filebuf m_file;
    std::uint64_t m_written = 0; // bytes before the hole
    std::uint64_t m_hole = 0;    // bytes between those and the buffer
    std::unique_ptr<char[]> m_buffer;
    std::size_t m_fill = 0;
    std::size_t m_capacity = 0;
};

} // namespace Pelgar::ORBE::recorder
