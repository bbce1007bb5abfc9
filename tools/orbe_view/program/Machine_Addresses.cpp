#include "Machine_Addresses.h"

#include <boost/asio/ip/address.hpp>

#ifdef _WIN32
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/host_name.hpp>
#include <boost/asio/ip/tcp.hpp>
#else
#include <ifaddrs.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <cstring>
#include <memory>
#endif

#include <algorithm>

namespace Pelgar::ORBE::view {

namespace {

using Address = boost::asio::ip::address;

#ifdef _WIN32

// The system knows its own name with all of its addresses.
std::vector<Address> all_addresses() {
    std::vector<Address> addresses;
    boost::system::error_code error;
    boost::asio::io_context context;
    boost::asio::ip::tcp::resolver resolver(context);
    for (const auto& entry : resolver.resolve(boost::asio::ip::host_name(error), "", error)) {
        addresses.push_back(entry.endpoint().address());
    }
    return addresses;
}

#else

std::vector<Address> all_addresses() {
    std::vector<Address> addresses;
    ifaddrs* first = nullptr;
    if (::getifaddrs(&first) != 0) {
        return addresses;
    }
    const std::unique_ptr<ifaddrs, decltype(&::freeifaddrs)> list(first, &::freeifaddrs);
    for (const ifaddrs* each = first; each != nullptr; each = each->ifa_next) {
        if (each->ifa_addr == nullptr || (each->ifa_flags & IFF_UP) == 0) {
            continue;
        }
        if (each->ifa_addr->sa_family == AF_INET) {
            sockaddr_in address{};
            std::memcpy(&address, each->ifa_addr, sizeof(address));
            addresses.emplace_back(boost::asio::ip::address_v4(ntohl(address.sin_addr.s_addr)));
        } else if (each->ifa_addr->sa_family == AF_INET6) {
            sockaddr_in6 address{};
            std::memcpy(&address, each->ifa_addr, sizeof(address));
            boost::asio::ip::address_v6::bytes_type bytes;
            std::memcpy(bytes.data(), &address.sin6_addr, bytes.size());
            addresses.emplace_back(boost::asio::ip::address_v6(bytes));
        }
    }
    return addresses;
}

#endif

bool is_reached_from_outside(const Address& address) {
    return !address.is_loopback() && !address.is_unspecified() && !address.is_multicast() &&
           !(address.is_v6() && address.to_v6().is_link_local());
}

Address address_of(const std::string& text) {
    boost::system::error_code error;
    const Address address = boost::asio::ip::make_address(text, error);
    return error ? boost::asio::ip::address_v4::loopback() : address;
}

} // namespace

bool is_any_address(const std::string& address) {
    return address_of(address).is_unspecified();
}

std::vector<std::string> machine_addresses(const std::string& any) {
    const bool wants_v6 = address_of(any).is_v6();
    std::vector<std::string> texts;
    for (const Address& address : all_addresses()) {
        if (address.is_v6() != wants_v6 || !is_reached_from_outside(address)) {
            continue;
        }
        const std::string text = address.to_string();
        if (std::find(texts.begin(), texts.end(), text) == texts.end()) {
            texts.push_back(text);
        }
    }
    return texts;
}

} // namespace Pelgar::ORBE::view
