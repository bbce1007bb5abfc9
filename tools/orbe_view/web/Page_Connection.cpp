#include "web/Page_Connection.h"

#include "web/Close_Reason.h"

#include <boost/asio/buffer.hpp>
#include <boost/asio/post.hpp>

#include <chrono>
#include <utility>

namespace Pelgar::ORBE::view {

namespace beast = boost::beast;
namespace http = boost::beast::http;
namespace websocket = boost::beast::websocket;

namespace {

// What a page has to say is short.
constexpr std::size_t most_message_bytes = 4096;

} // namespace

Page_Connection::Page_Connection(boost::asio::ip::tcp::socket socket, Server_State& state,
                                 std::unique_ptr<Ticket_Office::Ticket> connection,
                                 std::unique_ptr<Ticket_Office::Ticket> page)
    : m_stream(std::move(socket)), m_state(state), m_connection(std::move(connection)),
      m_page(std::move(page)) {}

void Page_Connection::run(http::request<http::empty_body> request) {
    websocket::stream_base::timeout limits{};
    limits.handshake_timeout = std::chrono::seconds(10);
    limits.idle_timeout = std::chrono::seconds(60);
    limits.keep_alive_pings = true;
    m_stream.set_option(limits);
    m_stream.read_message_max(most_message_bytes);
    m_stream.binary(true);
    auto kept = std::make_shared<http::request<http::empty_body>>(std::move(request));
    m_stream.async_accept(*kept, [self = shared_from_this(), kept](beast::error_code error) {
        if (!error) {
            self->m_is_open = true;
            self->m_state.pages.page_came(self);
            self->read();
        }
    });
}

void Page_Connection::read() {
    m_stream.async_read(m_buffer, [self = shared_from_this()](beast::error_code error, std::size_t) {
        self->on_read(error);
    });
}

void Page_Connection::on_read(beast::error_code error) {
    if (error) {
        leave();
        return;
    }
    const std::string text = beast::buffers_to_string(m_buffer.data());
    const bool is_text = m_stream.got_text();
    m_buffer.consume(m_buffer.size());
    if (is_text) {
        m_state.pages.page_said(shared_from_this(), text);
    } else {
        complain("orbe-view takes text", true);
    }
    read();
}

void Page_Connection::show(Shared_Picture picture) {
    {
        const std::lock_guard lock(m_mutex);
        m_waiting = std::move(picture);
        m_is_free = false;
    }
    boost::asio::post(m_stream.get_executor(), [self = shared_from_this()] { self->write(); });
}

void Page_Connection::complain(const std::string& reason, bool put_out) {
    boost::asio::post(m_stream.get_executor(), [self = shared_from_this(), reason, put_out] {
        self->m_complaint = reason;
        self->m_is_put_out = self->m_is_put_out || put_out;
        self->write();
    });
}

void Page_Connection::write() {
    if (!m_is_open || m_is_writing) {
        return;
    }
    if (m_complaint) {
        write_complaint();
        return;
    }
    {
        const std::lock_guard lock(m_mutex);
        m_written = std::exchange(m_waiting, nullptr);
        m_is_free = true;
    }
    if (!m_written) {
        return;
    }
    m_is_writing = true;
    m_stream.async_write(boost::asio::buffer(*m_written),
                         [self = shared_from_this()](beast::error_code error, std::size_t) {
                             self->m_is_writing = false;
                             self->m_written = nullptr;
                             if (error) {
                                 self->leave();
                             } else {
                                 self->write();
                             }
                         });
}

// The reason goes along with the close, which takes no more than this.
void Page_Connection::write_complaint() {
    std::string reason = std::exchange(m_complaint, std::nullopt).value_or("");
    if (m_is_put_out) {
        close(websocket::close_code::policy_error, reason);
        return;
    }
    m_is_writing = true;
    m_stream.text(true);
    auto kept = std::make_shared<std::string>(std::move(reason));
    m_stream.async_write(boost::asio::buffer(*kept),
                         [self = shared_from_this(), kept](beast::error_code error, std::size_t) {
                             self->m_is_writing = false;
                             self->m_stream.binary(true);
                             if (error) {
                                 self->leave();
                             } else {
                                 self->write();
                             }
                         });
}

void Page_Connection::close(websocket::close_code code, const std::string& reason) {
    m_is_open = false;
    m_state.pages.page_left(shared_from_this());
    m_stream.async_close(websocket::close_reason(code, close_reason_of(reason)),
                         [self = shared_from_this()](beast::error_code) {});
}

void Page_Connection::leave() {
    if (std::exchange(m_is_open, false)) {
        m_state.pages.page_left(shared_from_this());
    }
}

} // namespace Pelgar::ORBE::view
