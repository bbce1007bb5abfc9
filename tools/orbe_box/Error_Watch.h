// Program orbe-box. Remembers the last error that the library logged, for the user who asks why something
// failed. Any thread.
#pragma once

#include <mutex>
#include <string>

namespace Pelgar::ORBE::tools {

class Error_Watch {
public:
    Error_Watch();
    ~Error_Watch();
    Error_Watch(const Error_Watch&) = delete;
    Error_Watch& operator=(const Error_Watch&) = delete;

    // The last error since the last call, without trailing line ends; empty when there was none.
    std::string take();

private:
    void remember(std::string text);

    std::mutex m_mutex;
    std::string m_last;
};

} // namespace Pelgar::ORBE::tools
