// Program orbe-view, folders. The table of gaps of a recorded folder. When it has become longer, what has
// been added is read. It is opened for a moment only, because its writer replaces it at the end. One thread;
// blocks on the disk.
#pragma once

#include "folders/Gap_List.h"

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace Pelgar::ORBE::view {

// By the streams' names in the table.
using Gap_Lists = std::map<std::string, Gap_List>;

class Gap_Table_Reader {
public:
    explicit Gap_Table_Reader(const std::filesystem::path& folder);

    // A line that is not whole yet is of a gap behind which nothing is on the disk. Throws nothing.
    void look();

    // Never null; what was handed out does not change.
    std::shared_ptr<const Gap_Lists> gaps() const { return m_gaps; }

    // Why losses may not be known; empty: nothing is wrong.
    const std::string& problem() const { return m_problem; }

private:
    bool goes_on(std::ifstream& file) const;
    void begin_anew();
    void read(const std::string& text);
    void read_line(std::string_view line);

    std::filesystem::path m_path;
    std::uint64_t m_size = 0; // of the file, when it was read
    std::uint64_t m_read = 0; // up to the end of its last whole line
    std::uint64_t m_line_count = 0;
    std::string m_last_line; // and its end
    Gap_Lists m_lists;
    std::map<std::string, std::vector<Sample_Range>> m_misplaced; // before others of their stream
    std::shared_ptr<const Gap_Lists> m_gaps = std::make_shared<Gap_Lists>();
    std::string m_problem;
};

} // namespace Pelgar::ORBE::view
