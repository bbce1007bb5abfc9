// Layer: logging. One listener: a file or a callback. Written to under the router's lock, on the logging
// thread.
#pragma once

#include "Message.h"

#include <string>

namespace loguru::detail {

class Log_Sink {
public:
    Log_Sink(std::string id, Verbosity verbosity);
    virtual ~Log_Sink();
    Log_Sink(const Log_Sink&) = delete;
    Log_Sink& operator=(const Log_Sink&) = delete;

    // May throw; the router then goes on with the next listener.
    virtual void write(const Message& message) = 0;

    const std::string& id() const { return m_id; }

    Verbosity verbosity() const { return m_verbosity; }

private:
    std::string m_id;
    Verbosity m_verbosity;
};

} // namespace loguru::detail
