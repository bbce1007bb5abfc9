#include "web/Http_Connection.h"

#include "web/Page_Connection.h"
#include "web/Page_Files.h"

#include <boost/beast/websocket/rfc6455.hpp>

#include <chrono>

namespace Pelgar::ORBE::view {

namespace beast = boost::beast;
namespace http = boost::beast::http;

namespace {

constexpr auto patience = std::chrono::seconds(10);
constexpr std::uint32_t most_header_bytes = 8192;
constexpr const char* plain_text = "text/plain; charset=utf-8";

std::string_view view_of(beast::string_view text) {
    return {text.data(), text.size()};
}

} // namespace

Http_Connection::Http_Connection(boost::asio::ip::tcp::socket socket, Server_State& state,
                                 std::unique_ptr<Ticket_Office::Ticket> ticket)
    : m_stream(std::move(socket)), m_state(state), m_ticket(std::move(ticket)) {}

void Http_Connection::read() {
    m_parser.emplace();
    m_is_head = false;
    m_parser->header_limit(most_header_bytes);
    m_stream.expires_after(patience);
    http::async_read(
        m_stream, m_buffer, *m_parser,
        [self = shared_from_this()](beast::error_code error, std::size_t) { self->on_read(error); });
}

void Http_Connection::run_refusal() {
    refuse(Status::service_unavailable, "Too many connections to orbe-view are open; close some pages.");
}

void Http_Connection::on_read(beast::error_code error) {
    const bool is_about_request = error.category() == make_error_code(http::error::bad_method).category();
    if (error == http::error::end_of_stream || (error && !is_about_request)) {
        close();
    } else if (error == http::error::header_limit) {
        refuse(Status::request_header_fields_too_large, "The request is too long.");
    } else if (error) {
        refuse(Status::bad_request,
               "That is no request that orbe-view understands: " + error.message() + ".");
    } else {
        on_request(m_parser->get());
    }
}

void Http_Connection::on_request(const Request& request) {
    m_is_head = request.method() == http::verb::head;
    const auto host = view_of(request[http::field::host]);
    const auto target = view_of(request.target());
    const std::string_view path = target.substr(0, target.find('?'));
    if (!m_state.rules.is_host_allowed(host)) {
        refuse(Status::misdirected_request, "orbe-view is asked by its address only, not by this host name.");
        return;
    }
    if (beast::websocket::is_upgrade(request)) {
        open_page(request);
        return;
    }
    if (request.method() != http::verb::get && !m_is_head) {
        refuse(Status::method_not_allowed, "orbe-view answers GET and HEAD.");
        return;
    }
    const Page_File* const file = page_file(path);
    if (file == nullptr) {
        send(Status::not_found, plain_text, "There is no such file.\n", request.keep_alive());
    } else if (file == page_file("/") && !m_state.rules.is_token_right(target)) {
        refuse(Status::forbidden,
               "The address lacks the token that orbe-view has printed, or has a wrong one.");
    } else {
        send(Status::ok, file->type, std::string(file->content), request.keep_alive());
    }
}

void Http_Connection::open_page(const Request& request) {
    const auto host = view_of(request[http::field::host]);
    const auto target = view_of(request.target());
    if (target.substr(0, target.find('?')) != "/data") {
        refuse(Status::not_found, "The data are elsewhere.");
    } else if (!m_state.rules.is_origin_allowed(view_of(request[http::field::origin]), host)) {
        refuse(Status::forbidden, "Only orbe-view's own page gets the data.");
    } else if (!m_state.rules.is_token_right(target)) {
        refuse(Status::forbidden,
               "The address lacks the token that orbe-view has printed, or has a wrong one.");
    } else if (auto ticket = m_state.open_pages.take()) {
        m_stream.expires_never();
        std::make_shared<Page_Connection>(m_stream.release_socket(), m_state, std::move(m_ticket),
                                          std::move(ticket))
            ->run(m_parser->release());
    } else {
        refuse(Status::service_unavailable, "Too many pages of orbe-view are open; close some of them.");
    }
}

void Http_Connection::refuse(Status status, const std::string& reason) {
    send(status, plain_text, reason + "\n", false);
}

// To HEAD goes the head of the answer that GET would get, whatever it is.
void Http_Connection::send(Status status, std::string_view type, std::string body, bool keep_alive) {
    m_response.emplace(status, 11);
    m_response->set(http::field::server, "orbe-view");
    m_response->set(http::field::content_type, beast::string_view(type.data(), type.size()));
    m_response->set(http::field::cache_control, "no-store");
    m_response->set("Content-Security-Policy", "default-src 'self'; img-src 'self' data: blob:; "
                                               "frame-ancestors 'none'; base-uri 'none'; form-action 'none'");
    m_response->set("X-Content-Type-Options", "nosniff");
    m_response->set("Referrer-Policy", "no-referrer");
    m_response->set("Cross-Origin-Resource-Policy", "same-origin");
    if (status == Status::method_not_allowed) {
        m_response->set(http::field::allow, "GET, HEAD");
    }
    m_response->keep_alive(keep_alive);
    m_response->body() = std::move(body);
    m_response->prepare_payload();
    if (m_is_head) {
        m_response->body().clear();
    }
    m_stream.expires_after(patience);
    http::async_write(m_stream, *m_response,
                      [self = shared_from_this(), keep_alive](beast::error_code error, std::size_t) {
                          if (error || !keep_alive) {
                              self->close();
                          } else {
                              self->read();
                          }
                      });
}

// What the other side has sent and nobody has read must go first, or the answer is lost on its way.
void Http_Connection::close() {
    beast::error_code ignored;
    m_stream.socket().shutdown(boost::asio::ip::tcp::socket::shutdown_send, ignored);
    m_stream.expires_after(std::chrono::seconds(1));
    read_away();
}

void Http_Connection::read_away() {
    m_buffer.consume(m_buffer.size());
    m_stream.async_read_some(m_buffer.prepare(most_header_bytes),
                             [self = shared_from_this()](beast::error_code error, std::size_t) {
                                 if (!error) {
                                     self->read_away();
                                 }
                             });
}

} // namespace Pelgar::ORBE::view
