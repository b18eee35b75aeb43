// One WebSocket of the server: reads one message at a time and writes from a queue. Lives on the
// network thread.
#pragma once

#include "web/HttpServer.h"

#include <boost/asio/ip/tcp.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/http/message.hpp>
#include <boost/beast/http/string_body.hpp>
#include <boost/beast/websocket/stream.hpp>

#include <cstddef>
#include <deque>
#include <memory>
#include <string>

namespace Workbench {

class ClientSocket : public std::enable_shared_from_this<ClientSocket> {
public:
    // Receiver of the socket's events. Outlives the socket.
    class Owner {
    public:
        virtual void OnOpened(ClientSocket& socket) = 0;
        virtual void OnMessage(ClientSocket& socket, std::string text) = 0;
        // The last call; made also for a socket that never opened.
        virtual void OnClosed(ClientSocket& socket) = 0;

    protected:
        ~Owner() = default;
    };

    ClientSocket(SocketNumber number, boost::beast::tcp_stream stream,
                 const HttpServerOptions& options, Owner& owner);

    SocketNumber Number() const noexcept { return number_; }

    // Completes the WebSocket handshake of a request.
    void Accept(const boost::beast::http::request<boost::beast::http::string_body>& request);

    // Queues a message. A client whose queue exceeds the limit is disconnected.
    void Send(std::shared_ptr<const std::string> text);

    void ReadNext();

    // Closes the WebSocket after the queued messages.
    void Close();
    void Abort();

private:
    void WriteNext();
    void SayGoodbye();
    void End();

    const SocketNumber number_;
    const HttpServerOptions& options_;
    Owner& owner_;
    boost::beast::websocket::stream<boost::beast::tcp_stream> stream_;
    boost::beast::flat_buffer buffer_;
    std::deque<std::shared_ptr<const std::string>> unsent_;  // the first one is being written
    std::size_t unsentBytes_ = 0;
    bool open_ = false;
    bool reading_ = false;
    bool closing_ = false;
    bool ended_ = false;
};

}  // namespace Workbench
