#include "Json_Writer.h"

#include <cmath>
#include <iomanip>

namespace Pelgar::ORBE::bench {

Json_Writer::Json_Writer(std::ostream& out) : m_out(out) {
    begin('{');
}

Json_Writer::~Json_Writer() {
    end('}');
    m_out << "\n";
}

void Json_Writer::number(const std::string& name, double value) {
    name_value(name);
    if (std::isfinite(value)) {
        m_out << std::setprecision(6) << std::defaultfloat << value;
    } else {
        m_out << "null";
    }
}

// The texts are names that this program gives; none holds a character with a meaning of its own.
void Json_Writer::text(const std::string& name, const std::string& value) {
    name_value(name);
    m_out << '"' << value << '"';
}

void Json_Writer::begin_object(const std::string& name) {
    name_value(name);
    begin('{');
}

void Json_Writer::begin_object() {
    begin_value();
    begin('{');
}

void Json_Writer::end_object() {
    end('}');
}

void Json_Writer::begin_list(const std::string& name) {
    name_value(name);
    begin('[');
}

void Json_Writer::end_list() {
    end(']');
}

void Json_Writer::begin_value() {
    m_out << (m_first ? "\n" : ",\n") << m_indentation;
    m_first = false;
}

void Json_Writer::name_value(const std::string& name) {
    begin_value();
    m_out << '"' << name << "\": ";
}

void Json_Writer::begin(char bracket) {
    m_out << bracket;
    m_indentation += "  ";
    m_first = true;
}

void Json_Writer::end(char bracket) {
    m_indentation.resize(m_indentation.size() - 2);
    m_out << "\n" << m_indentation << bracket;
    m_first = false;
}

} // namespace Pelgar::ORBE::bench
