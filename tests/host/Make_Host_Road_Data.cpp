// make_host_road_data RECORDING EXPECTATION: writes the two files of a host's run, for hosts that cannot
// make them by themselves.
#include "Host_Road_Data.h"

#include <cstdio>
#include <cstdlib>
#include <exception>

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: make_host_road_data RECORDING EXPECTATION\n");
        return EXIT_FAILURE;
    }
    try {
        Pelgar::ORBE::host::make_host_road_data(argv[1], argv[2]);
    } catch (const std::exception& exception) {
        std::fprintf(stderr, "make_host_road_data: %s\n", exception.what());
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
