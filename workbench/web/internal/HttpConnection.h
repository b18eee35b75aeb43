// One connection of the server: handles requests in sequence until it closes or becomes a
// WebSocket. Lives on the network thread.
#pragma once

#include "web/HttpServer.h"

#include <boost/asio/ip/tcp.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/http/message.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/span_body.hpp>
#include <boost/beast/http/string_body.hpp>

#include <array>
#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>
#include <string_view>

namespace Workbench {

class AccessGuard;

class HttpConnection : public std::enable_shared_from_this<HttpConnection> {
public:
    using Request = boost::beast::http::request<boost::beast::http::string_body>;

    // The server, as the connection sees it. Outlives the connection.
    class Owner {
    public:
        virtual const HttpServerOptions& Options() const = 0;
        virtual const AccessGuard& Guard() const = 0;
        virtual void OnRequest(HttpConnection& connection, HttpRequest request) = 0;
        virtual void OnSocketWanted(boost::beast::tcp_stream stream, const Request& request) = 0;
        // The last call; the connection is closed, or has handed over its stream.
        virtual void OnEnded(HttpConnection& connection) = 0;

    protected:
        ~Owner() = default;
    };

    HttpConnection(boost::asio::ip::tcp::socket socket, Owner& owner);

    void ReadHeader();

    // Answers the last request passed to the owner.
    void Give(HttpAnswer answer);

    // Since when it has waited for a complete header, or for its peer to close; empty while it
    // serves a request.
    const std::optional<std::chrono::steady_clock::time_point>& WaitsSince() const noexcept
    {
        return waitsSince_;
    }

    // Whether an answer is being written.
    bool IsWriting() const noexcept { return response_.has_value(); }
    void Abort();

private:
    using Error = boost::beast::error_code;

    void OnHeader(Error error);
    void OnHeaderFailed(Error error);
    void ReadBody(Url url);
    void HandOn(bool isPost, Url url);
    void Refuse(unsigned status);
    void Write(HttpAnswer answer);
    void OnWritten(Error error);
    void Drain();
    void End();

    Owner& owner_;
    boost::beast::tcp_stream stream_;
    boost::beast::flat_buffer buffer_;
    std::optional<boost::beast::http::request_parser<boost::beast::http::string_body>> parser_;
    HttpAnswer answer_;  // holds the bytes that `response_` refers to
    std::optional<boost::beast::http::response<boost::beast::http::span_body<const char>>>
        response_;
    std::optional<std::chrono::steady_clock::time_point> waitsSince_;
    std::array<char, 4096> drained_{};
    std::size_t drainedBytes_ = 0;
    bool closes_ = false;
    bool ended_ = false;
};

}  // namespace Workbench
