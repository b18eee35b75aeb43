// A small HTTP server for one web page on this machine: requests, WebSockets, bounds and time
// limits. It serves on a thread of its own and knows nothing of documents. Peers are not trusted:
// what AccessGuard does not admit, is too big, too slow or malformed is refused without being
// handed on.
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

// Names a WebSocket for as long as the server runs; never used again.
using SocketNumber = std::uint64_t;

struct HttpRequest {
    bool isPost = false;
    Url url;           // below the token
    std::string body;  // of a POST
};

// Which content security policy an answer carries.
enum class ContentPolicy : std::uint8_t { kPage, kPanelFrame };

struct HttpAnswer {
    unsigned status = 200;
    std::string contentType{};                  // empty: none
    std::shared_ptr<const std::string> body{};  // null: empty
    std::vector<std::pair<std::string, std::string>> headers{};
    ContentPolicy policy = ContentPolicy::kPage;
    bool mayBeKept = false;  // by the browser's cache, for a day
};

// An answer that is still owed. One that is let go without being given says that the server is
// about to end (503). [any-thread]
class PendingAnswer {
public:
    PendingAnswer() = default;
    PendingAnswer(const PendingAnswer&) = delete;
    PendingAnswer& operator=(const PendingAnswer&) = delete;
    virtual ~PendingAnswer() = default;

    // Once.
    virtual void Give(HttpAnswer answer) = 0;
};
using PendingAnswerPtr = std::shared_ptr<PendingAnswer>;

// What the server hands on. Called on the server's thread; must not throw and must not wait.
class HttpListener {
public:
    HttpListener() = default;
    HttpListener(const HttpListener&) = delete;
    HttpListener& operator=(const HttpListener&) = delete;
    virtual ~HttpListener() = default;

    virtual void OnRequest(HttpRequest request, PendingAnswerPtr answer) = 0;

    virtual void OnSocketOpened(SocketNumber socket) = 0;
    // The next message comes after HttpServer::TakeNext. One beyond the bound ends the WebSocket.
    virtual void OnSocketMessage(SocketNumber socket, std::string text) = 0;
    virtual void OnSocketClosed(SocketNumber socket) = 0;
};

struct HttpServerOptions {
    std::uint16_t port = 0;  // 0: a free one
    std::size_t mostHeaderBytes = std::size_t{16} << 10;
    std::size_t mostBodyBytes = std::size_t{512} << 20;
    std::size_t mostMessageBytes = std::size_t{4} << 20;
    // What waits to be sent to one client; one that lets more pile up is cut off.
    std::size_t mostUnsentBytes = std::size_t{1} << 30;
    std::size_t mostConnections = 128;
    std::chrono::milliseconds headerTime = std::chrono::seconds(15);  // for a whole header
    std::chrono::milliseconds bodyTime = std::chrono::minutes(5);     // for a body, either way
    std::chrono::milliseconds closingTime = std::chrono::seconds(2);  // for goodbyes
};

class HttpServer {
public:
    // Takes a port of 127.0.0.1. `listener` must outlive the server. Throws std::runtime_error
    // where the port is taken.
    HttpServer(const HttpServerOptions& options, HttpListener& listener);
    ~HttpServer();
    HttpServer(const HttpServer&) = delete;
    HttpServer& operator=(const HttpServer&) = delete;

    std::uint16_t Port() const noexcept;
    // What to open in a browser.
    const std::string& Address() const noexcept;

    // Begins to serve. Once.
    void Start();

    // Sends one message to a client; nothing when it is gone. [any-thread]
    void Send(SocketNumber socket, std::shared_ptr<const std::string> text);

    // The message that was handed on last has been dealt with. [any-thread]
    void TakeNext(SocketNumber socket);

    // Closes one WebSocket behind what was sent to it. [any-thread]
    void CloseSocket(SocketNumber socket);

    // Closes every connection, WebSockets behind what was sent to them but in bounded time, and
    // ends the thread. The listener is not called any more then. A second call does nothing.
    void Stop();

private:
    class Core;

    std::shared_ptr<Core> core_;
    std::string address_;
};

}  // namespace Workbench
