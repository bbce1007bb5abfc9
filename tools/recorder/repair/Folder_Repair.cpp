#include "repair/Folder_Repair.h"

#include "description/Whole_File.h"

namespace Pelgar::ORBE::recorder {

std::uint64_t size_of(const std::filesystem::path& file) {
    return std::filesystem::exists(file) ? std::filesystem::file_size(file) : 0;
}

std::uint64_t Folder_Repair::cut_to_whole(const std::filesystem::path& file, std::uint64_t unit_bytes) {
    const std::uint64_t units = size_of(file) / unit_bytes;
    cut_to(file, units * unit_bytes);
    return units;
}

void Folder_Repair::cut_to(const std::filesystem::path& file, std::uint64_t bytes) {
    const std::uint64_t size = size_of(file);
    if (size > bytes) {
        std::filesystem::resize_file(file, bytes);
        tell(file, "cut by " + std::to_string(size - bytes) + " bytes");
    }
}

void Folder_Repair::make_content(const std::filesystem::path& file, const std::string& content) {
    if (!std::filesystem::exists(file)) {
        write_file(file, content);
        tell(file, "written anew");
    } else if (read_file(file) != content) {
        write_file(file, content);
        tell(file, "brought up to date");
    }
}

void Folder_Repair::remove(const std::filesystem::path& file) {
    if (std::filesystem::remove(file)) {
        tell(file, "removed");
    }
}

void Folder_Repair::tell(const std::filesystem::path& file, const std::string& what) {
    m_account.push_back(file.lexically_relative(m_folder).generic_string() + ": " + what);
}

} // namespace Pelgar::ORBE::recorder
