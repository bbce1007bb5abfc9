// Program orbe-view, folders. The table of gaps of a recorded folder, read again whenever it has become
// longer. It is opened for a moment only, because its writer replaces it at the end. One thread; blocks on
// the disk.
#pragma once

#include "folders/Gap_List.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <string>

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
    void read(const std::string& text);

    std::filesystem::path m_path;
    std::uint64_t m_size = 0; // of what has been read
    std::shared_ptr<const Gap_Lists> m_gaps = std::make_shared<Gap_Lists>();
    std::string m_problem;
};

} // namespace Pelgar::ORBE::view
