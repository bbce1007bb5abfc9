#include "adapter/Raw_Data_File.h"

#include "common/Host_Path.h"
#include "rows/C_Async_PSB_And_RHD_Demux.h"

#include <loguru.hpp>

#include <array>
#include <chrono>
#include <ctime>
#include <filesystem>
#include <system_error>

namespace Pelgar::ORBE::npoe_adapter {

namespace {

namespace fs = std::filesystem;
using demux::raw_data_file_name;

std::tm local_time(std::time_t time) {
    std::tm fields{};
#if defined(_WIN32)
    localtime_s(&fields, &time);
#else
    localtime_r(&time, &fields);
#endif
    return fields;
}

// A file's time is on a clock of its own, which is only compared with that of the calendar.
std::time_t time_of_last_change(const fs::path& file, std::error_code& error) {
    const auto age = fs::file_time_type::clock::now() - fs::last_write_time(file, error);
    const auto now = std::chrono::system_clock::now();
    return std::chrono::system_clock::to_time_t(
        now - std::chrono::duration_cast<std::chrono::system_clock::duration>(age));
}

fs::path free_name(std::time_t time) {
    const std::tm fields = local_time(time);
    std::array<char, 64> stem{};
    std::strftime(stem.data(), stem.size(), "raw_data_%Y-%m-%d_%H-%M-%S", &fields);
    fs::path name = std::string(stem.data()) + ".bin";
    std::error_code error;
    for (int number = 2; fs::exists(name, error); ++number) {
        name = std::string(stem.data()) + "_" + std::to_string(number) + ".bin";
    }
    return name;
}

} // namespace

void keep_raw_data_file(const File_Switch& simulation) {
    std::error_code error;
    const auto size = fs::file_size(raw_data_file_name, error);
    if (error || size == 0) {
        return;
    }
    // What cannot be read may be this very file, misspelt.
    const char* const recording = simulation.first_line.c_str();
    if (simulation.present &&
        (!why_unreadable(recording).empty() || is_same_file(recording, raw_data_file_name))) {
        return;
    }
    const std::time_t time = time_of_last_change(raw_data_file_name, error);
    if (!error) {
        const fs::path name = free_name(time);
        fs::rename(raw_data_file_name, name, error);
        if (!error) {
            LOG_F(WARNING, "%s was not empty and is kept as %s", raw_data_file_name, name.string().c_str());
            return;
        }
    }
    LOG_F(ERROR, "%s is not empty and stays as it is : %s", raw_data_file_name, error.message().c_str());
}

} // namespace Pelgar::ORBE::npoe_adapter
