// Tools, recording library. A file that appears under its name only when it is complete: it is written under
// another name beside it, renamed at the end, and removed when it is given up. Blocks on the disk.
#pragma once

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <span>
#include <string>

namespace Pelgar::ORBE::recording {

class Output_File {
public:
    // All operations throw std::runtime_error with a text for the user that names the path and the reason.
    explicit Output_File(const std::filesystem::path& path);
    ~Output_File();
    Output_File(const Output_File&) = delete;
    Output_File& operator=(const Output_File&) = delete;

    void write(std::span<const std::uint8_t> bytes);

    // Closes the file and gives it its name, replacing a file that has it.
    void commit();

private:
    struct Closer {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };

    [[noreturn]] void fail(int error) const;

    std::string m_name; // as the user calls it
    std::filesystem::path m_path;
    std::filesystem::path m_temporary;
    std::unique_ptr<std::FILE, Closer> m_file;
};

} // namespace Pelgar::ORBE::recording
