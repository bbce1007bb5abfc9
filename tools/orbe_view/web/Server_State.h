// Program orbe-view, web. What all connections of a server share. The server's thread.
#pragma once

#include "web/Access_Rules.h"
#include "web/I_Pages.h"
#include "web/Ticket_Office.h"

namespace Pelgar::ORBE::view {

struct Server_State {
    // Browsers hold a few connections each.
    static constexpr std::size_t most_connections = 48;
    static constexpr std::size_t most_pages = 16;
    // Connections that are told to go away.
    static constexpr std::size_t most_refusals = 256;

    Access_Rules rules;
    I_Pages& pages;
    Ticket_Office connections{most_connections};
    Ticket_Office open_pages{most_pages};
    Ticket_Office refusals{most_refusals};
};

} // namespace Pelgar::ORBE::view
