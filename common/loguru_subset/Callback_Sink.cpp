#include "Callback_Sink.h"

#include <utility>

namespace loguru::detail {

Callback_Sink::Callback_Sink(std::string id, Handler handler, void* user_data, Verbosity verbosity)
    : Log_Sink(std::move(id), verbosity), m_handler(handler), m_user_data(user_data) {}

void Callback_Sink::write(const Message& message) {
    m_handler(m_user_data, message);
}

} // namespace loguru::detail
