// Layer: façade. What the switch file for the raw capture asks for. Called on the host's threads; blocks for
// the file system only.
#pragma once

#include "adapter/File_Switch.h"

#include <optional>
#include <string>

namespace Pelgar::ORBE {
class ORBE_Controller_Library;
}

namespace Pelgar::ORBE::npoe_adapter {

// Present: the stream is also written to a file as it comes; the first line may name it.
inline constexpr const char* raw_capture_switch = "ORBE_RAW_CAPTURE";

// The file to write to, "raw_data.bin" where the first line is empty; nothing, and not a word, where there is
// no switch file.
std::optional<std::string> read_raw_capture_switch();

// Why the entry point `name` cannot write to the file, in the log; whether it can. The recording that is
// played is not written to.
bool may_capture(const char* name, const std::string& file, const File_Switch& simulation);

// Makes the controller write to the file. False, with the reason in the log, when there is no memory or no
// thread for it.
bool start_capture(const char* name, ORBE_Controller_Library& controller, const std::string& file);

} // namespace Pelgar::ORBE::npoe_adapter
