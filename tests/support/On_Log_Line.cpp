#include "On_Log_Line.h"

#include <loguru.hpp>

#include <utility>

namespace Pelgar::ORBE::test {

namespace {

std::atomic<int> g_next_id{0};

} // namespace

On_Log_Line::On_Log_Line(std::string text, std::function<void()> action)
    : m_text(std::move(text)), m_action(std::move(action)),
      m_id("on-log-line-" + std::to_string(g_next_id++)) {
    loguru::add_callback(
        m_id.c_str(),
        [](void* object, const loguru::Message& message) {
            auto& self = *static_cast<On_Log_Line*>(object);
            if (std::string(message.prefix) + message.message == self.m_text) {
                ++self.m_times;
                self.m_action();
            }
        },
        this, loguru::Verbosity_MAX);
}

On_Log_Line::~On_Log_Line() {
    loguru::remove_callback(m_id.c_str());
}

} // namespace Pelgar::ORBE::test
