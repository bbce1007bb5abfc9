// Tools, what all programs share. Sees to it that what a program prints has arrived: on a full disk or in a
// pipe that nobody reads any more it is lost, and the program must not answer that all went well. Main
// thread.
#pragma once

namespace Pelgar::ORBE::tools {

// Lets no file that the program opens take the place of a standard stream that its caller has closed, and
// turns the end of whoever reads the output into an error like any other. To be called before anything else.
void guard_standard_streams();

// Writes out what is buffered. A failure is remembered.
void flush_standard_output();

// Remembers a failure that was seen elsewhere; `reason` as in errno.
void note_lost_output(int reason);

// To be called when `program` has printed all. Answers `exit_code`, or, when something printed was lost and
// the code tells of no failure yet, that of a failure; says on standard error what has happened.
int finish_standard_output(const char* program, int exit_code);

} // namespace Pelgar::ORBE::tools
