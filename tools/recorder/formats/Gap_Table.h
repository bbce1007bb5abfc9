// Tools, recorder. The table of gaps beside the data, one line a gap: of which stream, from which of its
// samples on, how many. Lines come from the threads of all streams; blocks on the disk.
#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

namespace Pelgar::ORBE::recorder {

inline constexpr const char* gap_table_file_name = "gaps.csv";
inline constexpr const char* gap_table_head = "stream,sample,length\n";

struct Gap_Line {
    std::string stream;
    std::uint64_t sample; // the place in the stream's file, from 0
    std::uint64_t length;
};

// Of a line without its end; nothing for one that is damaged.
std::optional<Gap_Line> parse_gap_line(std::string_view line);

class Gap_Table {
public:
    // All operations throw std::system_error with the file's name.
    explicit Gap_Table(const std::filesystem::path& folder);

    // `sample` is the place in the stream's file, from 0. On the disk when it returns.
    void add(const std::string& stream, std::uint64_t sample, std::uint64_t length);

    // Puts the lines in order, by stream and sample, whichever thread came first. No operation may follow.
    void finish();

    std::uint64_t size() const;

private:
    void write(const std::string& text);

    std::filesystem::path m_path;
    mutable std::mutex m_mutex;
    std::ofstream m_file;
    std::uint64_t m_size = 0;
};

} // namespace Pelgar::ORBE::recorder
