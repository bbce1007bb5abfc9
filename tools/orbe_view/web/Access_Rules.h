// Program orbe-view, web. Who may have the page and the data. A page of somebody else's that is open in the
// same browser must not: not by a request of its own, and not by a name of its own that leads to this
// machine. Any thread; nothing blocks.
#pragma once

#include <string>
#include <string_view>

namespace Pelgar::ORBE::view {

class Access_Rules {
public:
    // Without a token whoever reaches the address may look.
    Access_Rules(unsigned short port, std::string token);

    // A "Host" header: this machine, or an address in numbers, with the server's port. Names can be made to
    // lead here, numbers cannot.
    bool is_host_allowed(std::string_view host) const;

    // An "Origin" header, which browsers send and programs need not: the page itself.
    bool is_origin_allowed(std::string_view origin, std::string_view host) const;

    // The target of a request: "/path?token=...".
    bool is_token_right(std::string_view target) const;

private:
    unsigned short m_port;
    std::string m_token;
};

// Anew at each call, of the system's random numbers.
std::string make_token();

} // namespace Pelgar::ORBE::view
