// fault_matrix PAGE [--write] [--only WORD]: makes every cell of the fault matrix and compares the page with
// it, or writes the page. Exit code 0 when they are equal.
#include "Cell_Run.h"
#include "Console_File.h"
#include "Fault_List.h"
#include "Host_Mode_Way.h"
#include "Own_Way.h"
#include "Recording_Cells.h"
#include "Table_Writer.h"

#include <CLI/CLI.hpp>
#include <loguru.hpp>

#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace {

using namespace Pelgar::ORBE::test;

std::string full_name(const Matrix_Fault& fault) {
    return fault.group + " " + fault.name;
}

std::string full_name(const Recording_Fault& fault) {
    return "Recordings " + fault.name;
}

bool can_be_made_in_host_mode(const Matrix_Fault& /*fault*/) {
    return true;
}

bool can_be_made_in_host_mode(const Recording_Fault& fault) {
    return fault.in_host_mode;
}

// Those whose names hold `only`, each with its cells in both ways.
template <typename Line, typename Cells, typename Fault>
std::vector<Line> lines_of(std::vector<Fault> faults, Console_File& console, const std::string& only) {
    std::vector<Line> lines;
    for (Fault& fault : faults) {
        if (full_name(fault).find(only) != std::string::npos) {
            lines.push_back({std::move(fault), {}, {}});
        }
    }
    const Own_Way own;
    Cells own_cells(own, console);
    for (Line& line : lines) {
        line.own = own_cells.run(line.fault);
    }
    const Host_Mode_Way host_mode;
    Cells host_cells(host_mode, console);
    for (Line& line : lines) {
        if (can_be_made_in_host_mode(line.fault)) {
            line.host_mode = host_cells.run(line.fault);
        }
    }
    return lines;
}

std::vector<std::string> split_lines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

std::string content_of(const std::string& file) {
    std::ostringstream content;
    content << std::ifstream(file, std::ios::binary).rdbuf();
    return content.str();
}

// Line by line: cells stand where they stand.
std::string differences(const std::string& page, const std::string& made) {
    const auto on_page = split_lines(page);
    const auto in_run = split_lines(made);
    std::string text;
    for (std::size_t i = 0; i < std::max(on_page.size(), in_run.size()); ++i) {
        const std::string& was = i < on_page.size() ? on_page[i] : "";
        const std::string& is = i < in_run.size() ? in_run[i] : "";
        if (was != is) {
            text += "line " + std::to_string(i + 1) + "\n-" + was + "\n+" + is + "\n";
        }
    }
    return text;
}

int run(const std::string& page, bool write, const std::string& only) {
    Console_File console;
    try {
        const std::string made =
            matrix_page(lines_of<Matrix_Line, Cell_Run>(all_faults(), console, only),
                        lines_of<Recording_Line, Recording_Cells>(all_recording_faults(), console, only));
        if (write) {
            std::ofstream(page, std::ios::binary | std::ios::trunc) << made;
            return EXIT_SUCCESS;
        }
        const std::string difference = differences(content_of(page), made);
        console.say(difference);
        return difference.empty() ? EXIT_SUCCESS : EXIT_FAILURE;
    } catch (const std::exception& exception) {
        console.say(std::string("fault_matrix: ") + exception.what() + "\n");
        return EXIT_FAILURE;
    }
}

} // namespace

int main(int argc, char** argv) {
    std::string page;
    std::string only;
    bool write = false;
    CLI::App app("Makes every cell of the fault matrix");
    app.add_option("page", page, "docs/fault-matrix.md")->required();
    app.add_flag("--write", write, "writes the page instead of comparing it");
    app.add_option("--only", only, "only faults whose names hold this");
    CLI11_PARSE(app, argc, argv);
    loguru::g_stderr_verbosity = loguru::Verbosity_OFF;
    return run(std::filesystem::absolute(page).string(), write, only);
}
