// Tools, recorder. What the repairs of all formats do to files, and the account of it. One thread; blocks on
// the disk.
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace Pelgar::ORBE::recorder {

// The samples of each stream that are there, by its name in the table of gaps.
using Stream_Lengths = std::map<std::string, std::uint64_t>;

class Folder_Repair {
public:
    // Names in the account are told from this folder on.
    explicit Folder_Repair(std::filesystem::path folder) : m_folder(std::move(folder)) {}

    // All operations throw std::system_error or std::filesystem::filesystem_error with the file's name.

    // Cuts what does not fill a unit of so many bytes, and returns the number of units. A file that is not
    // there has none.
    std::uint64_t cut_to_whole(const std::filesystem::path& file, std::uint64_t unit_bytes);

    // Cuts a file that is longer.
    void cut_to(const std::filesystem::path& file, std::uint64_t bytes);

    // Gives the file this content, unless it has it.
    void make_content(const std::filesystem::path& file, const std::string& content);

    void remove(const std::filesystem::path& file);

    void tell(const std::filesystem::path& file, const std::string& what);

    const std::vector<std::string>& account() const { return m_account; }

private:
    std::filesystem::path m_folder;
    std::vector<std::string> m_account;
};

// 0 for a file that is not there.
std::uint64_t size_of(const std::filesystem::path& file);

} // namespace Pelgar::ORBE::recorder
