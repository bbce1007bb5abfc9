// Test support, random hosts. A host that calls whatever comes to its mind, from several threads at once,
// while things happen to the box.
#pragma once

#include "Function_List.h"
#include "Hang_Watch.h"
#include "Random_Box.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace Pelgar::ORBE::test {

struct Random_Host_Options {
    std::uint64_t seed = 1;
    std::size_t calls = 1000; // of each thread
    std::size_t threads = 1;
    bool is_host_mode = false; // otherwise calls that begin and end acquisitions are made one after the other
};

class Random_Host {
public:
    Random_Host(const Random_Host_Options& options, Random_Box& box);

    // Makes all calls, then closes. Ends the process, with the stacks of all threads, when a call does not
    // come back.
    void run();

    // Those that have come back, and those of them that did what they were asked for.
    std::uint64_t calls() const { return m_calls; }

    std::uint64_t successes() const { return m_successes; }

    // What calls have thrown, by the functions' names, and how often.
    const std::map<std::string, std::uint64_t>& exceptions() const { return m_exceptions; }

private:
    void run_thread(std::size_t thread, Hang_Watch& watch);
    void call(const Random_Function& function, Random_Arguments& arguments);
    void rescue();
    void close();

    Random_Host_Options m_options;
    Random_Box& m_box;
    std::vector<Random_Function> m_functions;
    // Those that a run is made of, which would be rare among all.
    std::vector<const Random_Function*> m_frequent;
    std::atomic<std::uint64_t> m_calls{0};
    std::atomic<std::uint64_t> m_successes{0};
    std::mutex m_state_mutex;
    std::mutex m_exceptions_mutex;
    std::map<std::string, std::uint64_t> m_exceptions;
};

} // namespace Pelgar::ORBE::test
