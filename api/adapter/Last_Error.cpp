#include "adapter/Last_Error.h"

#include <loguru.hpp>

#include <array>
#include <cstdio>

namespace Pelgar::ORBE::npoe_adapter {

namespace {

// Of a fixed size, so that there is nothing to be taken down when the thread ends: it may log an error after
// that.
thread_local std::array<char, 1024> t_last_error{};

thread_local unsigned t_error_count = 0;

void keep_error(void* /*unused*/, const loguru::Message& message) {
    std::snprintf(t_last_error.data(), t_last_error.size(), "%s%s", message.prefix, message.message);
    ++t_error_count;
}

bool listen_to_log() {
    loguru::add_callback("NeuropixAPI_last_error", keep_error, nullptr, loguru::Verbosity_ERROR);
    return true;
}

} // namespace

void keep_last_errors() {
    [[maybe_unused]] static const bool listening = listen_to_log();
}

const char* last_error_of_this_thread() {
    return t_last_error.data();
}

unsigned error_count_of_this_thread() {
    return t_error_count;
}

} // namespace Pelgar::ORBE::npoe_adapter
