#include "Descriptor_Buffer.h"

#include "terminal/File_Descriptors.h"

#include <cerrno>
#include <cstddef>

namespace Pelgar::ORBE::bench {

Descriptor_Buffer::int_type Descriptor_Buffer::overflow(int_type character) {
    if (traits_type::eq_int_type(character, traits_type::eof())) {
        return traits_type::not_eof(character);
    }
    const char byte = traits_type::to_char_type(character);
    return xsputn(&byte, 1) == 1 ? character : traits_type::eof();
}

std::streamsize Descriptor_Buffer::xsputn(const char* text, std::streamsize count) {
    std::streamsize done = 0;
    while (done < count) {
        const int written =
            tools::descriptors::write(m_descriptor, text + done, static_cast<std::size_t>(count - done));
        if (written <= 0) {
            m_error = errno;
            break;
        }
        done += written;
    }
    return done;
}

} // namespace Pelgar::ORBE::bench
