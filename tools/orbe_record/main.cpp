// Program orbe-record: records from the box, or from a recording that plays one, into a folder that the lab's
// tools open. Exit codes: see Record_Program.h.
#include "Record_Program.h"

int main(int argc, char** argv) {
    return Pelgar::ORBE::recorder::run_record_program(argc, argv);
}
