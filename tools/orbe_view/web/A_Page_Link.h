// Program orbe-view, web. A page that is connected, as the rest of the program sees it. Any thread; nothing
// blocks: a picture is only handed over.
#pragma once

#include "pictures/Picture.h"

#include <string>

namespace Pelgar::ORBE::view {

class A_Page_Link {
public:
    A_Page_Link() = default;
    virtual ~A_Page_Link() = default;
    A_Page_Link(const A_Page_Link&) = delete;
    A_Page_Link& operator=(const A_Page_Link&) = delete;

    // Whether no picture waits: the last one is being sent, or has been. Until then another one would only
    // wait with it.
    virtual bool is_free() const = 0;

    // Takes the place of a picture that still waits. One that is being sent goes out, and what the system has
    // taken before arrives, however old it is by then: up to half a megabyte on this side, and what the
    // page's side takes.
    virtual void show(Shared_Picture picture) = 0;

    // Tells the page what is wrong with what it has said. One that has said nothing that makes sense is put
    // out.
    virtual void complain(const std::string& reason, bool put_out) = 0;
};

} // namespace Pelgar::ORBE::view
