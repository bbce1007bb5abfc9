#include "Error_Watch.h"

#include <loguru.hpp>

#include <utility>

namespace Pelgar::ORBE::tools {

namespace {

constexpr const char* callback_name = "orbe-box error watch";

} // namespace

Error_Watch::Error_Watch() {
    loguru::add_callback(
        callback_name,
        [](void* watch, const loguru::Message& message) {
            static_cast<Error_Watch*>(watch)->remember(message.message);
        },
        this, loguru::Verbosity_ERROR);
}

Error_Watch::~Error_Watch() {
    loguru::remove_callback(callback_name);
}

std::string Error_Watch::take() {
    const std::lock_guard lock(m_mutex);
    return std::exchange(m_last, {});
}

void Error_Watch::remember(std::string text) {
    while (!text.empty() && text.back() == '\n') {
        text.pop_back();
    }
    const std::lock_guard lock(m_mutex);
    m_last = std::move(text);
}

} // namespace Pelgar::ORBE::tools
