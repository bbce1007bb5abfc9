#include "common/Parse_Number.h"

#include <stdexcept>

namespace Pelgar::ORBE {

float parse_float(const std::string& text) {
    try {
        return std::stof(text);
    } catch (const std::invalid_argument&) {
        throw std::invalid_argument("invalid stof argument");
    } catch (const std::out_of_range&) {
        throw std::out_of_range("stof argument out of range");
    }
}

int parse_int(const std::string& text) {
    try {
        return std::stoi(text);
    } catch (const std::invalid_argument&) {
        throw std::invalid_argument("invalid stoi argument");
    } catch (const std::out_of_range&) {
        throw std::out_of_range("stoi argument out of range");
    }
}

} // namespace Pelgar::ORBE
