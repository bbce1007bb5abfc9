// Fuzzing: lets the same things happen on the library's road and on the model's, and ends the process at the
// first difference, with what it is.
#pragma once

#include "Library_Road.h"
#include "Printed_Output.h"
#include "Road_Input.h"
#include "Road_Model.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Pelgar::ORBE::test {

class Road_Comparison {
public:
    explicit Road_Comparison(const road_model::Road_Settings& settings);
    ~Road_Comparison();
    Road_Comparison(const Road_Comparison&) = delete;
    Road_Comparison& operator=(const Road_Comparison&) = delete;

    void take(const Road_Event& event);

    // After the last event.
    void compare_the_rest();

private:
    // Collects the library's log lines.
    class Log {
    public:
        Log();
        ~Log();
        std::vector<std::string> lines;
    };

    void work(unsigned who);
    void compare_packets(unsigned port);
    void compare_adc_packets();
    void compare_told();
    void compare_counts() const;

    Printed_Output m_printed;
    Log m_log;
    const bool m_is_host_mode;
    std::uint32_t m_streaming;
    road_model::Road_Model m_model;
    Library_Road m_library;
};

} // namespace Pelgar::ORBE::test
