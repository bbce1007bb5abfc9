// Test support: what a call of an exported function answers, writes and logs, all of it.
#pragma once

#include "API_Call.h"
#include "API_Fixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

namespace Pelgar::ORBE::test {

// One row of a table of expectations.
struct Expected_Call {
    std::string name;
    std::string logged;
    std::string written; // see Call_Outcome
    std::string result;
};

class Logged_Call_Fixture : public API_Fixture {
protected:
    // All lines of the log as "verbosity text".
    std::vector<std::string> logged_lines() const {
        std::vector<std::string> lines;
        for (const Log_Line& line : m_log.lines()) {
            lines.push_back(std::to_string(line.verbosity) + " " + line.text);
        }
        return lines;
    }

    // What a scope of this name at verbosity 1 with one line in it looks like.
    static std::vector<std::string> scope_with_line(const std::string& name, const std::string& line) {
        return {"1 { " + name, "1 " + line, "1 } " + name};
    }

    // Calls `function` twice, with buffers and with null pointers, and compares with the row of its name.
    template <typename Function, std::size_t count>
    void expect_call(const std::string& name, Function* function, const Expected_Call (&table)[count]) {
        const auto* const row = std::find_if(std::begin(table), std::end(table),
                                             [&](const Expected_Call& call) { return call.name == name; });
        ASSERT_NE(row, std::end(table)) << "nothing is said about " << name;
        const Call_Outcome outcome = call_with_samples(function);
        EXPECT_EQ(outcome.written, row->written);
        EXPECT_EQ(outcome.result, row->result);
        EXPECT_EQ(logged_lines(), scope_with_line(name, row->logged));
        m_log.clear();
        EXPECT_EQ(call_with_nulls(function), row->result);
        EXPECT_EQ(logged_lines(), scope_with_line(name, row->logged));
    }

    // Every row is about one of the functions.
    template <std::size_t count>
    static void expect_rows(const Expected_Call (&table)[count], std::vector<std::string> names) {
        std::vector<std::string> rows;
        for (const Expected_Call& row : table) {
            rows.push_back(row.name);
        }
        std::sort(rows.begin(), rows.end());
        std::sort(names.begin(), names.end());
        EXPECT_EQ(rows, names);
    }
};

} // namespace Pelgar::ORBE::test
