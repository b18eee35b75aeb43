// One WebSocket of the server: a message at a time comes in, a queue goes out. Everything happens
// on the server's thread.
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
    // Who is told what happens. Outlives the socket.
    class Owner {
    public:
        virtual void OnOpened(ClientSocket& socket) = 0;
        virtual void OnMessage(ClientSocket& socket, std::string text) = 0;
        // The last call; also for one that was never opened.
        virtual void OnClosed(ClientSocket& socket) = 0;

    protected:
        ~Owner() = default;
    };

    ClientSocket(SocketNumber number, boost::beast::tcp_stream stream,
                 const HttpServerOptions& options, Owner& owner);

    SocketNumber Number() const noexcept { return number_; }

    // Answers the request that asked for it.
    void Accept(const boost::beast::http::request<boost::beast::http::string_body>& request);

    // A client that does not take what it is sent is cut off once too much waits for it.
    void Send(std::shared_ptr<const std::string> text);

    void ReadNext();

    // Says goodbye once everything is sent.
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
