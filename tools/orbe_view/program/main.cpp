// Program orbe-view: shows what the box sends, or has sent, on a page in the browser.
#include "View_Program.h"

int main(int argc, char** argv) {
    return Pelgar::ORBE::view::run_view_program(argc, argv);
}
