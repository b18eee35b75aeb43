#include "web/HttpServer.h"

#include "web/AccessGuard.h"
#include "web/internal/ClientSocket.h"
#include "web/internal/HttpConnection.h"

#include <boost/asio/dispatch.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/steady_timer.hpp>

#include <atomic>
#include <optional>
#include <stdexcept>
#include <thread>
#include <unordered_map>
#include <utility>

namespace Workbench {

namespace asio = boost::asio;
using asio::ip::tcp;

class HttpServer::Core final : public std::enable_shared_from_this<Core>,
                               public HttpConnection::Owner,
                               public ClientSocket::Owner {
public:
    Core(const HttpServerOptions& options, HttpListener& listener);

    const AccessGuard& Guard() const override { return *guard_; }
    std::uint16_t Port() const noexcept { return port_; }

    void Start();
    void Stop();

    // Runs `work` on the network thread with the socket of that number, if it still exists.
    template <class Work>
    void WithSocket(SocketNumber number, Work work)
    {
        asio::post(io_, [this, number, work = std::move(work)] {
            if (const auto found = sockets_.find(number); found != sockets_.end()) {
                work(*std::shared_ptr<ClientSocket>(found->second));
            }
        });
    }

    void Give(const std::weak_ptr<HttpConnection>& connection, HttpAnswer answer);

private:
    class OwedAnswer;

    const HttpServerOptions& Options() const override { return options_; }
    void OnRequest(HttpConnection& connection, HttpRequest request) override;
    void OnSocketWanted(boost::beast::tcp_stream stream,
                        const HttpConnection::Request& request) override;
    void OnEnded(HttpConnection& connection) override;

    void OnOpened(ClientSocket& socket) override { listener_.OnSocketOpened(socket.Number()); }
    void OnMessage(ClientSocket& socket, std::string text) override
    {
        listener_.OnSocketMessage(socket.Number(), std::move(text));
    }
    void OnClosed(ClientSocket& socket) override;

    void Listen();
    void AcceptNext();
    void Serve(tcp::socket socket);
    void DropLongestWaiting();
    void Run();
    void Resume();
    void BeginStop();
    void CutOff();
    void EndIfAlone();

    const HttpServerOptions options_;
    HttpListener& listener_;
    std::uint16_t port_ = 0;
    std::optional<AccessGuard> guard_;

    asio::io_context io_{1};
    tcp::acceptor acceptor_{io_};
    asio::steady_timer retry_{io_};
    asio::steady_timer closing_{io_};
    std::unordered_map<HttpConnection*, std::shared_ptr<HttpConnection>> connections_;
    std::unordered_map<SocketNumber, std::shared_ptr<ClientSocket>> sockets_;
    SocketNumber lastSocket_ = 0;
    bool accepting_ = false;  // or waiting to do it again
    bool stopping_ = false;
    std::thread thread_;
};

// Holds neither the server nor the connection: an answer may outlive both.
class HttpServer::Core::OwedAnswer final : public PendingAnswer {
public:
    OwedAnswer(std::weak_ptr<Core> core, std::weak_ptr<HttpConnection> connection)
        : core_(std::move(core)), connection_(std::move(connection))
    {
    }
    ~OwedAnswer() override
    {
        if (!given_) {
            Give({.status = 503});
        }
    }

    void Give(HttpAnswer answer) override
    {
        if (const auto core = core_.lock(); core != nullptr && !given_.exchange(true)) {
            core->Give(connection_, std::move(answer));
        }
    }

private:
    const std::weak_ptr<Core> core_;
    const std::weak_ptr<HttpConnection> connection_;
    std::atomic<bool> given_ = false;
};

HttpServer::Core::Core(const HttpServerOptions& options, HttpListener& listener)
    : options_(options), listener_(listener)
{
    Listen();
    guard_.emplace(port_, MakeToken());
}

void HttpServer::Core::Listen()
{
    const tcp::endpoint wanted(asio::ip::address_v4::loopback(), options_.port);
    boost::system::error_code error;
    acceptor_.open(wanted.protocol());
    acceptor_.set_option(tcp::acceptor::reuse_address(true));
    acceptor_.bind(wanted, error);
    if (!error) {
        acceptor_.listen(tcp::acceptor::max_listen_connections, error);
    }
    if (error) {
        throw std::runtime_error("port " + std::to_string(options_.port) +
                                 " cannot be listened on: " + error.message());
    }
    port_ = acceptor_.local_endpoint().port();
}

void HttpServer::Core::Start()
{
    thread_ = std::thread([this] { Run(); });
}

void HttpServer::Core::Run()
{
    bool isStruck = false;
    for (;;) {
        try {
            if (std::exchange(isStruck, false)) {
                Resume();
            } else if (!accepting_ && !stopping_) {
                AcceptNext();
            }
            io_.run();
            return;
        } catch (const std::exception&) {
            isStruck = true;
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
        }
    }
}

// After an exception, most likely for lack of memory: the connection that it struck has lost its
// next step and cannot be told from others, so all end. Clients connect again by themselves.
void HttpServer::Core::Resume()
{
    CutOff();
    if (!accepting_ && !stopping_) {
        AcceptNext();
    }
}

void HttpServer::Core::AcceptNext()
{
    acceptor_.async_accept([this](boost::system::error_code error, tcp::socket socket) {
        accepting_ = false;
        if (stopping_) {
            return;
        }
        if (error) {
            // The process is out of a resource; an immediate retry would fail again.
            retry_.expires_after(std::chrono::milliseconds(100));
            retry_.async_wait([this](boost::system::error_code aborted) {
                accepting_ = false;
                if (!aborted && !stopping_) {
                    AcceptNext();
                }
            });
            accepting_ = true;
            return;
        }
        Serve(std::move(socket));
        AcceptNext();
    });
    accepting_ = true;
}

void HttpServer::Core::Serve(tcp::socket socket)
{
    const auto isFull = [this] {
        return connections_.size() + sockets_.size() >= options_.mostConnections;
    };
    if (isFull()) {
        DropLongestWaiting();
    }
    if (!isFull()) {
        boost::system::error_code ignored;
        socket.set_option(tcp::no_delay(true), ignored);
        const auto connection = std::make_shared<HttpConnection>(std::move(socket), *this);
        connections_.emplace(connection.get(), connection);
        connection->ReadHeader();
    }
}

// Peers that connect without asking for anything keep nobody out.
void HttpServer::Core::DropLongestWaiting()
{
    std::shared_ptr<HttpConnection> longest;
    for (const auto& [key, connection] : connections_) {
        if (connection->WaitsSince() &&
            (longest == nullptr || *connection->WaitsSince() < *longest->WaitsSince())) {
            longest = connection;
        }
    }
    if (longest != nullptr) {
        longest->Abort();
    }
}

void HttpServer::Core::OnRequest(HttpConnection& connection, HttpRequest request)
{
    listener_.OnRequest(std::move(request), std::make_shared<OwedAnswer>(
                                                weak_from_this(), connection.weak_from_this()));
}

void HttpServer::Core::Give(const std::weak_ptr<HttpConnection>& connection, HttpAnswer answer)
{
    asio::post(io_, [connection, answer = std::move(answer)]() mutable {
        if (const auto living = connection.lock()) {
            living->Give(std::move(answer));
        }
    });
}

void HttpServer::Core::OnSocketWanted(boost::beast::tcp_stream stream,
                                      const HttpConnection::Request& request)
{
    const auto socket =
        std::make_shared<ClientSocket>(++lastSocket_, std::move(stream), options_, *this);
    sockets_.emplace(socket->Number(), socket);
    socket->Accept(request);
}

void HttpServer::Core::OnEnded(HttpConnection& connection)
{
    connections_.erase(&connection);
    EndIfAlone();
}

void HttpServer::Core::OnClosed(ClientSocket& socket)
{
    if (sockets_.erase(socket.Number()) != 0) {
        listener_.OnSocketClosed(socket.Number());
    }
    EndIfAlone();
}

void HttpServer::Core::BeginStop()
{
    stopping_ = true;
    boost::system::error_code ignored;
    acceptor_.close(ignored);
    retry_.cancel();
    closing_.expires_after(options_.closingTime);
    closing_.async_wait([this](boost::system::error_code) { CutOff(); });
    const auto connections = connections_;
    for (const auto& [key, connection] : connections) {
        if (!connection->IsWriting()) {
            connection->Abort();
        }
    }
    const auto sockets = sockets_;
    for (const auto& [key, socket] : sockets) {
        socket->Close();
    }
    EndIfAlone();
}

void HttpServer::Core::CutOff()
{
    const auto connections = connections_;
    for (const auto& [key, connection] : connections) {
        connection->Abort();
    }
    const auto sockets = sockets_;
    for (const auto& [key, socket] : sockets) {
        socket->Abort();
    }
}

void HttpServer::Core::EndIfAlone()
{
    if (stopping_ && connections_.empty() && sockets_.empty()) {
        closing_.cancel();
    }
}

void HttpServer::Core::Stop()
{
    if (thread_.joinable()) {
        asio::post(io_, [this] { BeginStop(); });
        thread_.join();
    }
}

HttpServer::HttpServer(const HttpServerOptions& options, HttpListener& listener)
    : core_(std::make_shared<Core>(options, listener))
{
    address_ = core_->Guard().Address();
}

HttpServer::~HttpServer()
{
    Stop();
}

std::uint16_t HttpServer::Port() const noexcept
{
    return core_->Port();
}

const std::string& HttpServer::Address() const noexcept
{
    return address_;
}

void HttpServer::Start()
{
    core_->Start();
}

void HttpServer::Send(SocketNumber socket, std::shared_ptr<const std::string> text)
{
    core_->WithSocket(socket,
                      [text = std::move(text)](ClientSocket& client) { client.Send(text); });
}

void HttpServer::TakeNext(SocketNumber socket)
{
    core_->WithSocket(socket, [](ClientSocket& client) { client.ReadNext(); });
}

void HttpServer::CloseSocket(SocketNumber socket)
{
    core_->WithSocket(socket, [](ClientSocket& client) { client.Close(); });
}

void HttpServer::Stop()
{
    core_->Stop();
}

}  // namespace Workbench
