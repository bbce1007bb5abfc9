#include "web/Access_Rules.h"

#include <boost/asio/ip/address.hpp>

#include <array>
#include <random>

namespace Pelgar::ORBE::view {

namespace {

constexpr unsigned short http_port = 80;
constexpr std::size_t token_words = 4; // of 32 bits

// Takes as long wherever the first difference is.
bool are_equal(std::string_view one, std::string_view other) {
    if (one.size() != other.size()) {
        return false;
    }
    unsigned difference = 0;
    for (std::size_t place = 0; place < one.size(); ++place) {
        difference |= static_cast<unsigned>(static_cast<unsigned char>(one[place]) ^
                                            static_cast<unsigned char>(other[place]));
    }
    return difference == 0;
}

bool is_address(std::string_view text) {
    boost::system::error_code error;
    boost::asio::ip::make_address(std::string(text), error);
    return !error;
}

} // namespace

Access_Rules::Access_Rules(unsigned short port, std::string token)
    : m_port(port), m_token(std::move(token)) {}

bool Access_Rules::is_host_allowed(std::string_view host) const {
    std::string_view name = host;
    std::string_view port;
    const std::size_t bracket = host.rfind(']');
    const std::size_t colon = host.rfind(':');
    if (colon != std::string_view::npos && (bracket == std::string_view::npos || colon > bracket)) {
        name = host.substr(0, colon);
        port = host.substr(colon + 1);
    }
    if (port.empty() ? m_port != http_port : port != std::to_string(m_port)) {
        return false;
    }
    if (name.size() > 2 && name.front() == '[' && name.back() == ']') {
        name = name.substr(1, name.size() - 2);
        return name.find(':') != std::string_view::npos && is_address(name);
    }
    return name == "localhost" || (name.find(':') == std::string_view::npos && is_address(name));
}

bool Access_Rules::is_origin_allowed(std::string_view origin, std::string_view host) const {
    return origin.empty() || origin == "http://" + std::string(host);
}

bool Access_Rules::is_token_right(std::string_view target) const {
    if (m_token.empty()) {
        return true;
    }
    constexpr std::string_view name = "token=";
    std::size_t begin = target.find('?');
    while (begin != std::string_view::npos) {
        const std::string_view field = target.substr(begin + 1);
        if (field.substr(0, name.size()) == name) {
            return are_equal(field.substr(name.size(), field.find('&') - name.size()), m_token);
        }
        begin = target.find('&', begin + 1);
    }
    return false;
}

std::string make_token() {
    constexpr const char* digits = "0123456789abcdef";
    std::random_device random;
    std::string token;
    for (std::size_t word = 0; word < token_words; ++word) {
        std::uint32_t bits = random();
        for (int digit = 0; digit < 8; ++digit, bits >>= 4U) {
            token += digits[bits & 0xFU];
        }
    }
    return token;
}

} // namespace Pelgar::ORBE::view
