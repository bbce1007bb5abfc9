#include "Log_Capture.h"

#include <loguru.hpp>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <utility>

namespace Pelgar::ORBE::test {

namespace {

std::atomic<int> g_next_id{0};

bool is_scope(const Log_Line& line) {
    return line.text.starts_with("{ ") || line.text.starts_with("} ");
}

// loguru closes a scope with "} 0.123 s: name"; the duration is dropped so that tests can compare whole
// texts.
std::string without_duration(std::string text) {
    constexpr std::string_view separator = " s: ";
    const auto separator_at = text.find(separator);
    if (text.starts_with("} ") && separator_at != std::string::npos) {
        text.erase(2, separator_at + separator.size() - 2);
    }
    return text;
}

} // namespace

Log_Capture::Log_Capture() : m_id("log-capture-" + std::to_string(g_next_id++)) {
    loguru::add_callback(
        m_id.c_str(),
        [](void* capture, const loguru::Message& message) {
            const std::string whole = std::string(message.prefix) + message.message;
            static_cast<Log_Capture*>(capture)->add(
                {message.verbosity, std::filesystem::path(message.filename).filename().string(),
                 without_duration(whole)});
        },
        this, loguru::Verbosity_MAX);
}

Log_Capture::~Log_Capture() {
    loguru::remove_callback(m_id.c_str());
}

std::vector<Log_Line> Log_Capture::lines() const {
    const std::lock_guard lock(m_mutex);
    return m_lines;
}

std::vector<std::string> Log_Capture::texts() const {
    std::vector<std::string> texts;
    for (const Log_Line& line : lines()) {
        if (!is_scope(line)) {
            texts.push_back(line.text);
        }
    }
    return texts;
}

int Log_Capture::count(const std::string& text) const {
    const auto all = lines();
    return static_cast<int>(
        std::count_if(all.begin(), all.end(), [&](const Log_Line& line) { return line.text == text; }));
}

int Log_Capture::count(int verbosity, const std::string& text) const {
    const auto all = lines();
    return static_cast<int>(std::count_if(all.begin(), all.end(), [&](const Log_Line& line) {
        return line.verbosity == verbosity && line.text == text;
    }));
}

bool Log_Capture::has_scope(int verbosity, const std::string& name) const {
    return count(verbosity, "{ " + name) > 0;
}

void Log_Capture::clear() {
    const std::lock_guard lock(m_mutex);
    m_lines.clear();
}

void Log_Capture::add(Log_Line line) {
    const std::lock_guard lock(m_mutex);
    m_lines.push_back(std::move(line));
}

} // namespace Pelgar::ORBE::test
