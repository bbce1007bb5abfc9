// loading_host LIBRARY WAY: a host that loads the library at run time, streams a recording and parts from the
// library in one of the ways below. Exits with 0 when nothing has gone wrong.
#include "Loaded_Box.h"
#include "Loaded_Library.h"

#if defined(_WIN32)
#include "Detached_Process.h"

#include <windows.h>
#endif

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <optional>
#include <stdexcept>
#include <string>

namespace {

using namespace Pelgar::ORBE::host;

constexpr int failed = 1;

// Lets go of the library although its threads are at work, and comes back to it later.
void let_go(std::optional<Loaded_Box>& box, const std::string& library) {
    box.reset();
    if (!Loaded_Library::is_in_memory(library)) {
        throw std::runtime_error("the library has gone and its threads are still there");
    }
    box.emplace(library);
}

void end_process() {
#if defined(_WIN32)
    ExitProcess(0);
#else
    std::exit(0);
#endif
}

void part(std::optional<Loaded_Box>& box, const std::string& library, const std::string& way) {
    box->open();
    if (way == "free-opened") {
        let_go(box, library);
        box->close();
        return;
    }
    box->start();
    box->read();
    if (way == "free-streaming") {
        let_go(box, library);
        box->read();
        box->close();
    } else if (way == "close-and-free") {
        box->close();
        box.reset();
        box.emplace(library);
        box->open();
        box->close();
    } else if (way == "end-process-streaming") {
        end_process();
    } else if (way != "return-streaming") {
        throw std::runtime_error("there is no way of this name");
    }
}

} // namespace

int main(int argc, char** argv) {
    const std::string library = argc > 1 ? argv[1] : "";
    std::string way = argc > 2 ? argv[2] : "";
    try {
#if defined(_WIN32)
        const std::string detached = "detached-";
        if (way.starts_with(detached)) {
            if (!is_detached()) {
                return run_detached("\"" + std::string(argv[0]) + "\" \"" + library + "\" " + way);
            }
            way.erase(0, detached.size());
        }
#endif
        // Destroyed never: a host that returns from main has not let go of the library either.
        static auto& box = *new std::optional<Loaded_Box>(library);
        part(box, library, way);
    } catch (const std::exception& exception) {
        std::fprintf(stderr, "loading_host %s: %s\n", way.c_str(), exception.what());
        return failed;
    }
    return 0;
}
