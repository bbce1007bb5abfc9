#include "back_ends/File_Descriptor.h"

#include <fcntl.h>
#include <unistd.h>

#include <utility>

namespace Pelgar::ORBE {

File_Descriptor::File_Descriptor(const std::string& path)
    : m_descriptor(::open(path.c_str(), O_RDWR | O_CLOEXEC)) {}

File_Descriptor::~File_Descriptor() {
    close();
}

File_Descriptor& File_Descriptor::operator=(File_Descriptor&& other) noexcept {
    std::swap(m_descriptor, other.m_descriptor);
    other.close();
    return *this;
}

void File_Descriptor::close() {
    if (is_open()) {
        ::close(std::exchange(m_descriptor, closed));
    }
}

} // namespace Pelgar::ORBE
