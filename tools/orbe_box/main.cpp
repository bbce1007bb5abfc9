// Program orbe-box: looks at an ORBE acquisition box on the bench, tests its probe ports and writes its
// flash. Exit codes: 0 done, 1 failed, 2 wrong arguments.
#include "Box_Program.h"

#include <iostream>
#include <memory>

int main(int argc, char** argv) {
    using namespace Pelgar::ORBE;

    const tools::Box_Environment environment{
        [](bool simulation) { return std::make_unique<ORBE_Controller_Library>(simulation); }, std::cin};
    return tools::run_box_program(argc, argv, environment);
}
