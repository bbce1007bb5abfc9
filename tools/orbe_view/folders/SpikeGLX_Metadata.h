// Program orbe-view, folders. What the metadata of a data file in the format of SpikeGLX say: lines
// "key=value". Any thread; the constructor blocks on the disk.
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace Pelgar::ORBE::view {

class SpikeGLX_Metadata {
public:
    // Throws std::system_error with the file's name.
    explicit SpikeGLX_Metadata(std::filesystem::path path);

    const std::filesystem::path& path() const { return m_path; }

    // Nothing for a key that is not there.
    std::optional<std::string> text(const std::string& key) const;
    std::optional<double> number(const std::string& key) const; // finite
    std::optional<std::uint64_t> whole_number(const std::string& key) const;

    // Those of a list like "0:383,768", one by one. Throws std::runtime_error when it is none.
    std::vector<int> numbers(const std::string& key) const;

    // The numbers of each pair of brackets of a table like "(0,384)(0 1 0 500 250 1)". Throws as above.
    std::vector<std::vector<double>> table(const std::string& key) const;

    // Throws std::runtime_error that names the file.
    [[noreturn]] void refuse(const std::string& what) const;

private:
    std::filesystem::path m_path;
    std::map<std::string, std::string> m_values;
};

} // namespace Pelgar::ORBE::view
