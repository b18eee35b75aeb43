#include "Clients.h"

#include <arpa/inet.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <boost/asio/buffer.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/beast/core/buffers_to_string.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/http/field.hpp>
#include <boost/beast/websocket/stream.hpp>

#include <cstring>
#include <stdexcept>

namespace WebTests {

namespace {

namespace asio = boost::asio;
namespace beast = boost::beast;

void LimitWaiting(int descriptor)
{
    const timeval limit{60, 0};
    ::setsockopt(descriptor, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
    ::setsockopt(descriptor, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
}

}  // namespace

ServerAddress::ServerAddress(const std::string& address)
{
    const std::size_t begin = address.find("//") + 2;
    const std::size_t end = address.find('/', begin);
    host = address.substr(begin, end - begin);
    port = static_cast<std::uint16_t>(std::stoul(host.substr(host.find(':') + 1)));
    token = address.substr(end + 1, address.size() - end - 2);
}

BareConnection::BareConnection(std::uint16_t port) : descriptor_(::socket(AF_INET, SOCK_STREAM, 0))
{
    LimitWaiting(descriptor_);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (::connect(descriptor_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        throw std::runtime_error(std::string("cannot connect: ") + std::strerror(errno));
    }
}

BareConnection::~BareConnection()
{
    ::close(descriptor_);
}

bool BareConnection::Send(std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t sent = ::send(descriptor_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent < 0) {
            return false;
        }
        bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
    return true;
}

std::string BareConnection::ReadAll()
{
    std::string all;
    char buffer[65536];
    for (;;) {
        const ssize_t count = ::recv(descriptor_, buffer, sizeof buffer, 0);
        if (count < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) {
            throw std::runtime_error("the server neither answers nor closes");
        }
        if (count <= 0) {
            return all;
        }
        all.append(buffer, static_cast<std::size_t>(count));
    }
}

HttpResult Exchange(const ServerAddress& server, std::string_view request)
{
    BareConnection connection(server.port);
    connection.Send(request);
    const std::string answer = connection.ReadAll();
    const std::size_t end = answer.find("\r\n\r\n");
    if (end == std::string::npos) {
        return {};
    }
    return {std::stoi(answer.substr(answer.find(' ') + 1)), answer.substr(0, end + 2),
            answer.substr(end + 4)};
}

HttpResult Get(const ServerAddress& server, const std::string& path)
{
    return Exchange(server, "GET /" + server.token + path + " HTTP/1.1\r\nHost: " + server.host +
                                "\r\nConnection: close\r\n\r\n");
}

HttpResult Post(const ServerAddress& server, const std::string& path, const std::string& body)
{
    return Exchange(server, "POST /" + server.token + path + " HTTP/1.1\r\nHost: " + server.host +
                                "\r\nOrigin: http://" + server.host +
                                "\r\nConnection: close\r\nContent-Length: " +
                                std::to_string(body.size()) + "\r\n\r\n" + body);
}

class BrowserClient::Socket {
public:
    explicit Socket(const ServerAddress& server)
    {
        stream.next_layer().connect({asio::ip::address_v4::loopback(), server.port});
        LimitWaiting(stream.next_layer().native_handle());
        stream.set_option(
            beast::websocket::stream_base::decorator([&](beast::websocket::request_type& request) {
                request.set(beast::http::field::origin, "http://" + server.host);
            }));
        stream.read_message_max(0);
        stream.handshake(server.host, "/" + server.token + "/socket");
    }

    asio::io_context io;
    beast::websocket::stream<asio::ip::tcp::socket> stream{io};
    beast::flat_buffer buffer;
};

BrowserClient::BrowserClient(const ServerAddress& server)
    : socket_(std::make_unique<Socket>(server))
{
}

BrowserClient::~BrowserClient() = default;

void BrowserClient::SendText(const std::string& text)
{
    socket_->stream.text(true);
    socket_->stream.write(asio::buffer(text));
}

void BrowserClient::SendBinary(const std::string& bytes)
{
    socket_->stream.binary(true);
    socket_->stream.write(asio::buffer(bytes));
}

Json BrowserClient::Read()
{
    beast::error_code error;
    socket_->buffer.clear();
    socket_->stream.read(socket_->buffer, error);
    if (error) {
        throw std::runtime_error("the server sends no more: " + error.message());
    }
    Json message = Json::parse(beast::buffers_to_string(socket_->buffer.data()));
    const std::string type = message.at("type");
    if (type == "panel") {
        tree.Apply(message);
        AskForRows(message);
    } else if (type == "documents") {
        documents = message;
    } else if (type == "document") {
        for (Json& known : documents.at("documents")) {
            known =
                known.at("id") == message.at("document").at("id") ? message.at("document") : known;
        }
    } else if (type == "locale") {
        locale = message.at("name");
    } else if (type != "reply") {
        others.push_back(message);
    }
    return message;
}

void BrowserClient::AskForRows(const Json& message)
{
    for (const Json& change : message.at("changes")) {
        if (change.at(0) == "w" && change.size() == 4) {
            asked_.erase(change.at(1).get<std::uint64_t>());
        }
    }
    std::erase_if(asked_, [this](std::uint64_t list) { return tree.ListWith(list) == nullptr; });
    if (!seesAll || message.at("remaining") != 0) {
        return;
    }
    for (const std::uint64_t list : tree.TakeChangedLists()) {
        const std::size_t pages = tree.ListWith(list)->count;
        if (pages > 0) {
            asked_.insert(list);
            Send({{"type", "window"},
                  {"list", list},
                  {"from", {0, 0}},
                  {"to", {pages - 1, 0xFFFFFFFF}}});
        }
    }
}

Json BrowserClient::ReadUntil(const std::function<bool(const Json&)>& fits)
{
    for (;;) {
        Json message = Read();
        if (fits(message)) {
            return message;
        }
    }
}

unsigned BrowserClient::ReadClose()
{
    try {
        for (;;) {
            Read();
        }
    } catch (const std::runtime_error&) {
        return socket_->stream.reason().code;
    }
}

Json BrowserClient::Command(const std::string& name, Json arguments)
{
    const std::uint64_t id = ++lastCommand_;
    arguments["type"] = "command";
    arguments["name"] = name;
    arguments["id"] = id;
    Send(arguments);
    Json reply = ReadUntil([&](const Json& message) {
        return message.at("type") == "reply" && message.at("id") == id;
    });
    while (!asked_.empty()) {
        Read();
    }
    return reply;
}

void BrowserClient::Fence()
{
    Command("fence");  // refused, as there is none
}

Json BrowserClient::Document(std::uint64_t id) const
{
    for (const Json& document : documents.at("documents")) {
        if (document.at("id") == id) {
            return document;
        }
    }
    throw std::runtime_error("there is no document " + std::to_string(id));
}

std::vector<std::uint64_t> BrowserClient::Ids() const
{
    std::vector<std::uint64_t> ids;
    for (const Json& document : documents.at("documents")) {
        ids.push_back(document.at("id"));
    }
    return ids;
}

}  // namespace WebTests
