// Program orbe-view, web. One connected page, over a WebSocket: what it says goes to whoever looks after the
// pages, and the latest picture goes out when the system has taken the one before it. On the server's
// thread, but for what other threads hand over; nothing waits.
#pragma once

#include "web/Server_State.h"

#include <boost/asio/ip/tcp.hpp>
#include <boost/beast/core.hpp>
#include <boost/beast/http.hpp>
#include <boost/beast/websocket.hpp>

#include <atomic>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace Pelgar::ORBE::view {

class Page_Connection final : public A_Page_Link, public std::enable_shared_from_this<Page_Connection> {
public:
    Page_Connection(boost::asio::ip::tcp::socket socket, Server_State& state,
                    std::unique_ptr<Ticket_Office::Ticket> connection,
                    std::unique_ptr<Ticket_Office::Ticket> page);

    void run(boost::beast::http::request<boost::beast::http::empty_body> request);

    // Any thread.
    bool is_free() const override { return m_is_free; }

    void show(Shared_Picture picture) override;
    void complain(const std::string& reason, bool put_out) override;

private:
    void read();
    void on_read(boost::beast::error_code error);
    void write();
    void write_complaint();
    void close(boost::beast::websocket::close_code code, const std::string& reason);
    void leave();

    boost::beast::websocket::stream<boost::beast::tcp_stream> m_stream;
    Server_State& m_state;
    std::unique_ptr<Ticket_Office::Ticket> m_connection;
    std::unique_ptr<Ticket_Office::Ticket> m_page;
    boost::beast::flat_buffer m_buffer;

    std::mutex m_mutex;
    Shared_Picture m_waiting;
    std::atomic<bool> m_is_free{true};

    // Of the server's thread.
    bool m_is_open = false;
    bool m_is_writing = false;
    Shared_Picture m_written;
    std::optional<std::string> m_complaint;
    bool m_is_put_out = false;
};

} // namespace Pelgar::ORBE::view
