#include "back_ends/Bar_Mapping_Error.h"

#include <algorithm>
#include <cstddef>

namespace Pelgar::ORBE {

namespace {

// The message is the text advanced by the error code, so that the length of what is left tells the code. Most
// codes lead beyond the text, into those that lie behind it. All of them are kept in one array, in the order
// in which the back-end uses them, so that there is something to lead into; a code beyond its end leaves
// nothing of the message.
constexpr char texts[] = "map bar ioctl failed!\0"
                         " sized bar mapped to user space\n\0"
                         "ReadFile from device failed: %d\0"
                         "c2h transfer failed\0"
                         "Read timeout.\n\0"
                         " read_issue_counter.\n\0"
                         "Closing mm driver handle\n\0"
                         "Closing c2h driver handle\n";
constexpr std::size_t end_of_texts = sizeof texts - 1;

} // namespace

const char* bar_mapping_error_text(std::uint32_t error) {
    return texts + std::min<std::size_t>(error, end_of_texts);
}

} // namespace Pelgar::ORBE
