// Program orbe-view, web. Whoever looks after the pages. Called on the server's thread, which must not wait.
#pragma once

#include "web/A_Page_Link.h"

#include <memory>
#include <string>

namespace Pelgar::ORBE::view {

class I_Pages {
public:
    virtual void page_came(const std::shared_ptr<A_Page_Link>& page) = 0;
    virtual void page_said(const std::shared_ptr<A_Page_Link>& page, const std::string& text) = 0;
    virtual void page_left(const std::shared_ptr<A_Page_Link>& page) = 0;

    // Once, on the thread that ends the server, when no other function is called any more: no page may be
    // kept beyond this call, because all of them go with the server.
    virtual void server_ends() = 0;

protected:
    ~I_Pages() = default;
};

} // namespace Pelgar::ORBE::view
