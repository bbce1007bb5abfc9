// The list of all functions against the header, the published set and the documentation.
#include "Function_Names.h"
#include "NeuropixAPI.h"
#include "NeuropixAPI_C.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

namespace {

using namespace Neuropixels;
using namespace Pelgar::ORBE::test;
using Names = std::vector<std::string>;

// Each row states its function's type. A name of the list that the header does not declare does not compile.
#define NP_FUNCTION(result, name, parameters, arguments)                                                     \
    static_assert(std::is_same_v<decltype(Neuropixels::name), result parameters>, #name);                    \
    static_assert(std::is_same_v<decltype(::np_##name), result parameters>, #name);
#define NP_ADDITION(result, name, parameters, arguments) NP_FUNCTION(result, name, parameters, arguments)
#define NP_TEXT_ADDITION(result, name, parameters, arguments)                                                \
    static_assert(std::is_same_v<decltype(Neuropixels::name), result parameters>, #name);                    \
    static_assert(std::is_same_v<decltype(::np_##name), NP_ErrorCode(char*, size_t)>, #name);
#include "NeuropixAPI_Functions.inc"

TEST(Function_List, HasWhatTheHeaderDeclaresAndNothingElse) {
    EXPECT_EQ(listed_functions(), functions_declared_in(source_text("api/NeuropixAPI.h")));
}

TEST(Function_List, HasThePublishedSetAndNothingElse) {
    EXPECT_EQ(sorted(listed_published_functions()),
              sorted(lines_in(source_text("tests/api/published_functions.txt"))));
}

TEST(Function_List, NamesTheBoxsOwnAdditions) {
    EXPECT_EQ(sorted(listed_additions()),
              (Names{"bs_get_fpga_design_build_date", "bs_get_fpga_design_label",
                     "clear_all_electrode_to_bank_assignments", "get_available_port_capability",
                     "np_dbg_setlevel", "probe_set_bist_mode", "start_acquisition", "stop_acquisition"}));
}

TEST(Function_List, NamesNoFunctionTwice) {
    const Names names = listed_functions();
    EXPECT_EQ(std::set(names.begin(), names.end()).size(), names.size());
}

TEST(Function_List, HeaderScanFindsEveryFormOfDeclaration) {
    const std::string header = "#define NP_EXPORT \\\n    __declspec(dllimport)\n"
                               "// NP_EXPORT int not_this_one();\n"
                               "/* NP_EXPORT int nor_this(); */\n"
                               "NP_EXPORT NP_ErrorCode one(int a, // NP_EXPORT void x(\n int b);\n"
                               "NP_EXPORT const char*\n    two();\n"
                               "  NP_EXPORT void three(int (*callback)(int level));\n"
                               "NP_EXPORT std::string four(); NP_EXPORT bool five (int);\n"
                               "int not_exported();\n";
    EXPECT_EQ(functions_declared_in(header), (Names{"one", "two", "three", "four", "five"}));
}

// docs/api-functions.md tells in one table a kind what each function does.
class Function_Page : public testing::Test {
protected:
    // The names in each section, in the order of the page.
    std::map<std::string, Names> sections() const {
        std::map<std::string, Names> found;
        std::istringstream page(source_text("docs/api-functions.md"));
        static const std::regex name(R"(`(\w+)`)");
        std::string section;
        for (std::string line; std::getline(page, line);) {
            if (line.starts_with("## ")) {
                section = line.substr(3);
            }
            // The last column of a table's row.
            const auto column = line.rfind('|', line.size() - 2);
            if (line.starts_with("|") && column != std::string::npos) {
                const std::string names = line.substr(column);
                for (std::sregex_iterator i(names.begin(), names.end(), name), end; i != end; ++i) {
                    found[section].push_back((*i)[1]);
                }
            }
        }
        return found;
    }
};

TEST_F(Function_Page, NamesEveryFunctionOnce) {
    Names names;
    for (const auto& [section, functions] : sections()) {
        names.insert(names.end(), functions.begin(), functions.end());
    }
    EXPECT_EQ(sorted(names), sorted(listed_functions()));
}

TEST_F(Function_Page, TellsTheKinds) {
    Names fixed{
#define NP_FIXED_ANSWER(type, name, parameters, written, ...) #name,
#include "api/NeuropixAPI_dummy_info.inc"
    };
    EXPECT_EQ(sorted(sections()["Fixed answer"]), sorted(fixed));
    Names logged{
#define NP_LOGGED_ONLY(type, name, parameters, result, ...) #name,
#include "api/NeuropixAPI_unused.inc"
    };
    for (const char* const name :
         {"arm", "closePort", "closeProbe", "dbg_getlevel", "dbg_getversion_datetime", "dbg_setlevel",
          "dbg_setlogcallback", "openProbe", "setOPMODE", "streamTell"}) {
        logged.emplace_back(name);
    }
    EXPECT_EQ(sorted(sections()["Logged only"]), sorted(logged));
    const auto unsupported = listed_unsupported_functions();
    EXPECT_EQ(sorted(sections()["Not supported"]), Names(unsupported.begin(), unsupported.end()));
}

} // namespace
