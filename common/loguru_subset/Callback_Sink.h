// Layer: logging. A callback as listener.
#pragma once

#include "Log_Sink.h"

namespace loguru::detail {

class Callback_Sink final : public Log_Sink {
public:
    using Handler = void (*)(void* user_data, const Message& message);

    Callback_Sink(std::string id, Handler handler, void* user_data, Verbosity verbosity);

    void write(const Message& message) override;

private:
    Handler m_handler;
    void* m_user_data;
};

} // namespace loguru::detail
