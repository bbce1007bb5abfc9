// Layer: logging. A record as a line of text. Any thread.
#pragma once

#include "Log_Record.h"
#include "Message.h"

#include <cstdio>
#include <string>

namespace loguru::detail {

// What stands before every message: "2024-05-01 12:00:00.123 (   0.004s) [thread   1]
// NeuropixAPI.cpp:104    INFO| " in one line, with columns of fixed width. Local time; the uptime counts from
// the start of the library; threads are numbered from 1 in the order in which they first log.
std::string preamble_of(const Log_Record& record);

// Writes the record as one line, in one call. A failure is ignored.
void write_line(std::FILE* stream, const Message& message);

} // namespace loguru::detail
