// HTTP and WebSocket server for one local web page, with limits on sizes and times. It runs on its
// own network thread and is independent of documents. Peers are not trusted: a request that
// AccessGuard does not admit, that is too large, too slow or malformed is refused without reaching
// the listener.
#pragma once

#include "web/Url.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace Workbench {

// Identifies a WebSocket; never reused while the server runs.
using SocketNumber = std::uint64_t;

struct HttpRequest {
    bool isPost = false;
    Url url;           // below the token
    std::string body;  // of a POST
};

// Content security policy of an answer.
enum class ContentPolicy : std::uint8_t { kPage, kPanelFrame };

struct HttpAnswer {
    unsigned status = 200;
    std::string contentType{};                  // empty: none
    std::shared_ptr<const std::string> body{};  // null: empty
    std::vector<std::pair<std::string, std::string>> headers{};
    ContentPolicy policy = ContentPolicy::kPage;
    bool mayBeKept = false;  // cacheable by the browser for a day
};

// The pending answer to a request. Destroyed without Give, it answers 503 (the server is shutting
// down). [any-thread]
class PendingAnswer {
public:
    PendingAnswer() = default;
    PendingAnswer(const PendingAnswer&) = delete;
    PendingAnswer& operator=(const PendingAnswer&) = delete;
    virtual ~PendingAnswer() = default;

    // To be called at most once.
    virtual void Give(HttpAnswer answer) = 0;
};
using PendingAnswerPtr = std::shared_ptr<PendingAnswer>;

// Receiver of admitted requests and WebSocket events. Called on the network thread; must neither
// throw nor block.
class HttpListener {
public:
    HttpListener() = default;
    HttpListener(const HttpListener&) = delete;
    HttpListener& operator=(const HttpListener&) = delete;
    virtual ~HttpListener() = default;

    virtual void OnRequest(HttpRequest request, PendingAnswerPtr answer) = 0;

    virtual void OnSocketOpened(SocketNumber socket) = 0;
    // The next message is read after HttpServer::TakeNext. A message over the size limit closes the
    // WebSocket.
    virtual void OnSocketMessage(SocketNumber socket, std::string text) = 0;
    virtual void OnSocketClosed(SocketNumber socket) = 0;
};

struct HttpServerOptions {
    std::uint16_t port = 0;  // 0: a free one
    std::size_t mostHeaderBytes = std::size_t{16} << 10;
    std::size_t mostBodyBytes = std::size_t{512} << 20;
    std::size_t mostMessageBytes = std::size_t{4} << 20;
    // Limit for bytes queued to one client; a client over it is disconnected.
    std::size_t mostUnsentBytes = std::size_t{1} << 30;
    // One more takes the place of the connection that has waited longest for a request.
    std::size_t mostConnections = 128;
    std::chrono::milliseconds headerTime = std::chrono::seconds(15);  // for a complete header
    std::chrono::milliseconds bodyTime =
        std::chrono::minutes(5);  // for a body, in either direction
    std::chrono::milliseconds closingTime = std::chrono::seconds(2);  // for closing handshakes
};

class HttpServer {
public:
    // Binds a port of 127.0.0.1. `listener` must outlive the server. Throws std::runtime_error when
    // the port is in use.
    HttpServer(const HttpServerOptions& options, HttpListener& listener);
    ~HttpServer();
    HttpServer(const HttpServer&) = delete;
    HttpServer& operator=(const HttpServer&) = delete;

    std::uint16_t Port() const noexcept;
    // URL to open in a browser.
    const std::string& Address() const noexcept;

    // Starts serving. To be called once.
    void Start();

    // Queues one message to a client; no effect when it has disconnected. [any-thread]
    void Send(SocketNumber socket, std::shared_ptr<const std::string> text);

    // Reports the last message as processed, so that the next one is read. [any-thread]
    void TakeNext(SocketNumber socket);

    // Closes one WebSocket after the messages queued to it. [any-thread]
    void CloseSocket(SocketNumber socket);

    // Closes every connection (WebSockets after the messages queued to them, within `closingTime`)
    // and ends the thread. The listener is not called afterwards. A second call does nothing.
    void Stop();

private:
    class Core;

    std::shared_ptr<Core> core_;
    std::string address_;
};

}  // namespace Workbench
