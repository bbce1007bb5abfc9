// Layer: logging. A log file as listener. Every line is in the hands of the operating system when `write`
// returns, so that a host that crashes leaves a whole log.
#pragma once

#include "Log_Sink.h"

#include <cstdio>
#include <memory>

namespace loguru::detail {

class File_Sink final : public Log_Sink {
public:
    // Opens the file with the C library's `mode`; throws std::system_error when that fails.
    File_Sink(const char* path, const char* mode, Verbosity verbosity);

    // A line that cannot be written, as on a full disk, is lost.
    void write(const Message& message) override;

private:
    struct Close {
        void operator()(std::FILE* file) const noexcept { std::fclose(file); }
    };

    std::unique_ptr<std::FILE, Close> m_file;
};

} // namespace loguru::detail
