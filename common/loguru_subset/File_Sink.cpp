#include "File_Sink.h"

#include "Log_Line.h"

#include <cerrno>
#include <system_error>

namespace loguru::detail {

File_Sink::File_Sink(const char* path, const char* mode, Verbosity verbosity)
    : Log_Sink(path, verbosity), m_file(std::fopen(path, mode)) {
    if (!m_file) {
        throw std::system_error(errno, std::generic_category());
    }
    // Whole lines are written at once; a buffer would only keep them back.
    std::setvbuf(m_file.get(), nullptr, _IONBF, 0);
}

void File_Sink::write(const Message& message) {
    write_line(m_file.get(), message);
}

} // namespace loguru::detail
