// Benchmarks: writes nested figures as JSON, in the order in which they are given.
#pragma once

#include <ostream>
#include <string>

namespace Pelgar::ORBE::bench {

class Json_Writer {
public:
    // Begins the outermost object. The stream must outlive the writer.
    explicit Json_Writer(std::ostream& out);
    // Ends it.
    ~Json_Writer();
    Json_Writer(const Json_Writer&) = delete;
    Json_Writer& operator=(const Json_Writer&) = delete;

    void number(const std::string& name, double value);
    void text(const std::string& name, const std::string& value);
    void begin_object(const std::string& name);
    // One object of a list.
    void begin_object();
    void end_object();
    void begin_list(const std::string& name);
    void end_list();

private:
    void begin_value();
    void name_value(const std::string& name);
    void begin(char bracket);
    void end(char bracket);

    std::ostream& m_out;
    std::string m_indentation;
    bool m_first = true;
};

} // namespace Pelgar::ORBE::bench
