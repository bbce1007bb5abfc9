#include "web/Web_Server.h"

#include "web/Http_Connection.h"
#include "web/Server_State.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/steady_timer.hpp>

#include <chrono>
#include <stdexcept>
#include <thread>

namespace Pelgar::ORBE::view {

namespace {

using boost::asio::ip::tcp;

// When the system has no more connections to give.
constexpr auto after_failure = std::chrono::milliseconds(100);

} // namespace

class Web_Server::Parts {
public:
    Parts(const tcp::endpoint& endpoint, const std::string& token, I_Pages& pages)
        : m_state{Access_Rules(endpoint.port(), token), pages}, m_acceptor(m_context, endpoint),
          m_timer(m_context) {
        m_state.rules = Access_Rules(port(), token);
        accept();
        m_thread = std::thread([this] { m_context.run(); });
    }

    ~Parts() {
        m_context.stop();
        m_thread.join();
        m_state.pages.server_ends();
    }

    Parts(const Parts&) = delete;
    Parts& operator=(const Parts&) = delete;

    unsigned short port() const { return m_acceptor.local_endpoint().port(); }

private:
    void accept() {
        m_acceptor.async_accept([this](boost::system::error_code error, tcp::socket socket) {
            if (error) {
                m_timer.expires_after(after_failure);
                m_timer.async_wait([this](boost::system::error_code) { accept(); });
                return;
            }
            take(std::move(socket));
            accept();
        });
    }

    void take(tcp::socket socket) {
        boost::system::error_code ignored;
        socket.set_option(tcp::no_delay(true), ignored);
        // What waits here for a slow page is old when it comes.
        socket.set_option(tcp::socket::send_buffer_size(256 * 1024), ignored);
        if (auto ticket = m_state.connections.take()) {
            std::make_shared<Http_Connection>(std::move(socket), m_state, std::move(ticket))->run();
        } else if (auto refusal = m_state.refusals.take()) {
            std::make_shared<Http_Connection>(std::move(socket), m_state, std::move(refusal))->run_refusal();
        }
    }

    Server_State m_state; // before the context, which holds the connections with their tickets
    boost::asio::io_context m_context{1};
    tcp::acceptor m_acceptor;
    boost::asio::steady_timer m_timer;
    std::thread m_thread;
};

Web_Server::Web_Server(const std::string& address, unsigned short port, const std::string& token,
                       I_Pages& pages) {
    try {
        m_parts = std::make_unique<Parts>(tcp::endpoint(boost::asio::ip::make_address(address), port), token,
                                          pages);
    } catch (const boost::system::system_error& error) {
        throw std::runtime_error("cannot listen at " + address + ", port " + std::to_string(port) + ": " +
                                 error.code().message());
    }
}

Web_Server::~Web_Server() = default;

unsigned short Web_Server::port() const {
    return m_parts->port();
}

} // namespace Pelgar::ORBE::view
