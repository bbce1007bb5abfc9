// Test support: does something in the moment in which a line is logged, on the thread that logs it.
#pragma once

#include <atomic>
#include <functional>
#include <string>

namespace Pelgar::ORBE::test {

class On_Log_Line {
public:
    // `text` is the whole line; a scope that opens reads "{ name". The action must not throw.
    On_Log_Line(std::string text, std::function<void()> action);
    ~On_Log_Line();
    On_Log_Line(const On_Log_Line&) = delete;
    On_Log_Line& operator=(const On_Log_Line&) = delete;

    // How often the line was logged.
    int times() const { return m_times; }

private:
    std::string m_text;
    std::function<void()> m_action;
    std::atomic<int> m_times{0};
    std::string m_id;
};

} // namespace Pelgar::ORBE::test
