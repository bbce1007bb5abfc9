// Program orbe-view, web. The server: takes connections and answers them, all on one thread of its own. Made
// and ended on the main thread.
#pragma once

#include "web/I_Pages.h"

#include <memory>
#include <string>

namespace Pelgar::ORBE::view {

class Web_Server {
public:
    // Listens at the address, in numbers; port 0 takes one that is free. Throws std::runtime_error when that
    // cannot be. An empty token asks for none.
    Web_Server(const std::string& address, unsigned short port, const std::string& token, I_Pages& pages);
    // Drops all connections; afterwards nobody is called any more.
    ~Web_Server();
    Web_Server(const Web_Server&) = delete;
    Web_Server& operator=(const Web_Server&) = delete;

    unsigned short port() const;

private:
    class Parts;
    std::unique_ptr<Parts> m_parts;
};

} // namespace Pelgar::ORBE::view
