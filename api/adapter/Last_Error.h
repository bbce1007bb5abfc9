// Layer: façade. Keeps the last error that each thread has logged, for getLastErrorMessage. Any thread;
// nothing blocks but for the log's own lock.
#pragma once

namespace Pelgar::ORBE::npoe_adapter {

// Begins to listen to the log, once a process; called before anything that may log an error.
void keep_last_errors();

// The last error that the calling thread has logged, without time and place; empty when there was none. Stays
// valid until the thread logs the next one. Errors of more than 1023 characters are cut.
const char* last_error_of_this_thread();

// How many errors the calling thread has logged so far, so that a call can tell whether it has logged one.
unsigned error_count_of_this_thread();

} // namespace Pelgar::ORBE::npoe_adapter
