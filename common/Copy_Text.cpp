#include "common/Copy_Text.h"

namespace Pelgar::ORBE {

std::size_t copy_text(std::string_view text, char* buffer, std::size_t length) {
    if (buffer != nullptr && length != 0) {
        buffer[text.copy(buffer, length - 1)] = '\0';
    }
    return text.size();
}

} // namespace Pelgar::ORBE
