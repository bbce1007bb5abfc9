#include "Log_Sink.h"

#include <utility>

namespace loguru::detail {

Log_Sink::Log_Sink(std::string id, Verbosity verbosity) : m_id(std::move(id)), m_verbosity(verbosity) {}

Log_Sink::~Log_Sink() = default;

} // namespace loguru::detail
