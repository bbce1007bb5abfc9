#include "web/Close_Reason.h"

namespace Pelgar::ORBE::view {

namespace {

// A byte of a character behind its first one.
bool is_continuation(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

} // namespace

std::string close_reason_of(const std::string& reason) {
    std::size_t length = reason.size();
    if (length > most_close_reason_bytes) {
        length = most_close_reason_bytes;
        while (length > 0 && is_continuation(reason[length])) {
            --length;
        }
    }
    return reason.substr(0, length);
}

} // namespace Pelgar::ORBE::view
