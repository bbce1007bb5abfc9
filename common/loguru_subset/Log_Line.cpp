#include "Log_Line.h"

#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <ctime>
#include <string_view>

namespace loguru::detail {

namespace {

const auto g_start = std::chrono::steady_clock::now();

unsigned thread_number() {
    static std::atomic<unsigned> last{0};
    thread_local const unsigned number = ++last;
    return number;
}

std::tm local_time(std::time_t time) {
    std::tm parts{};
#if defined(_WIN32)
    localtime_s(&parts, &time);
#else
    localtime_r(&time, &parts);
#endif
    return parts;
}

const char* without_folders(const char* file) {
    const std::string_view name(file);
    const auto separator = name.find_last_of("/\\");
    return separator == std::string_view::npos ? file : file + separator + 1;
}

std::string level_text(Verbosity verbosity) {
    switch (verbosity) {
    case Verbosity_FATAL:
        return "FATAL";
    case Verbosity_ERROR:
        return "ERROR";
    case Verbosity_WARNING:
        return "WARN";
    case Verbosity_INFO:
        return "INFO";
    default:
        return std::to_string(verbosity);
    }
}

} // namespace

std::string preamble_of(const Log_Record& record) {
    using std::chrono::milliseconds;
    const auto now = std::chrono::system_clock::now();
    const auto since_epoch = std::chrono::duration_cast<milliseconds>(now.time_since_epoch());
    const std::tm parts = local_time(std::chrono::system_clock::to_time_t(now));
    const std::chrono::duration<double> uptime = std::chrono::steady_clock::now() - g_start;

    constexpr std::size_t date_size = 32;
    std::array<char, date_size> date{};
    std::strftime(date.data(), date.size(), "%Y-%m-%d %H:%M:%S", &parts);
    constexpr std::size_t usual_size = 256;
    std::array<char, usual_size> text{};
    std::snprintf(text.data(), text.size(), "%s.%03d (%8.3fs) [thread %3u] %36s:%-4u %5s| ", date.data(),
                  static_cast<int>(since_epoch.count() % milliseconds(std::chrono::seconds(1)).count()),
                  uptime.count(), thread_number(), without_folders(record.file), record.line,
                  level_text(record.verbosity).c_str());
    return text.data();
}

void write_line(std::FILE* stream, const Message& message) {
    std::string line(message.preamble);
    line += message.indentation;
    line += message.prefix;
    line += message.message;
    line += '\n';
    static_cast<void>(std::fwrite(line.data(), 1, line.size(), stream));
}

} // namespace loguru::detail
