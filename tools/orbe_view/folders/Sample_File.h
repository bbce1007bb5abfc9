// Program orbe-view, folders. A file of rows of 16-bit numbers that somebody may still be writing. It is
// opened once it is there and held open to be read alone, which costs the writer nothing. One thread; blocks
// on the disk.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <span>

namespace Pelgar::ORBE::view {

class Sample_File {
public:
    Sample_File(std::filesystem::path path, std::size_t row_length);

    const std::filesystem::path& path() const { return m_path; }

    std::size_t row_length() const { return m_row_length; }

    // Looks how long it is; answers whether it has grown.
    bool look();

    // Whole rows, none as long as it is not there. They stay, whatever becomes of the file.
    std::uint64_t rows() const { return m_rows; }

    // Those that were there before it has grown the last time.
    std::uint64_t rows_before() const { return m_rows_before; }

    // The rows from `first` on that fill the destination. Throws std::runtime_error when the file does not
    // have them.
    void read(std::uint64_t first, std::span<std::int16_t> destination);

private:
    std::filesystem::path m_path;
    std::size_t m_row_length;
    std::ifstream m_file;
    std::uint64_t m_rows = 0;
    std::uint64_t m_rows_before = 0;
};

} // namespace Pelgar::ORBE::view
