// Program orbe-view, web. One connection: answers its requests for the page's files, one after the other, and
// hands it over when the page wants the data. The server's thread; nothing waits, and who says nothing is
// dropped after a while.
#pragma once

#include "web/Server_State.h"

#include <boost/beast/core.hpp>
#include <boost/beast/http.hpp>

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace Pelgar::ORBE::view {

class Http_Connection : public std::enable_shared_from_this<Http_Connection> {
public:
    // With a ticket for a connection, or for a refusal.
    Http_Connection(boost::asio::ip::tcp::socket socket, Server_State& state,
                    std::unique_ptr<Ticket_Office::Ticket> ticket);

    void run() { read(); }

    // Answers that there are too many, whatever is asked.
    void run_refusal();

private:
    using Request = boost::beast::http::request<boost::beast::http::empty_body>;
    using Response = boost::beast::http::response<boost::beast::http::string_body>;
    using Status = boost::beast::http::status;

    void read();
    void on_read(boost::beast::error_code error);
    void on_request(const Request& request);
    void open_page(const Request& request);
    void send(Status status, std::string_view type, std::string body, bool keep_alive);
    void refuse(Status status, const std::string& reason);
    void close();
    void read_away();

    boost::beast::tcp_stream m_stream;
    Server_State& m_state;
    std::unique_ptr<Ticket_Office::Ticket> m_ticket;
    boost::beast::flat_buffer m_buffer;
    std::optional<boost::beast::http::request_parser<boost::beast::http::empty_body>> m_parser;
    bool m_is_head = false; // what is asked, as far as that is understood
    std::optional<Response> m_response;
};

} // namespace Pelgar::ORBE::view
