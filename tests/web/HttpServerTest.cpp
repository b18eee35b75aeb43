// What the server lets in. After each attempt it must still serve.
#include "web/HttpServer.h"
#include "Clients.h"
#include "web/AccessGuard.h"
#include "web/Url.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <condition_variable>
#include <mutex>
#include <new>
#include <set>
#include <thread>

namespace WebTests {
namespace {

using namespace Workbench;
using testing::HasSubstr;

// Answers every request with "ok" and its body, and echoes each message to every client.
class Echo final : public HttpListener {
public:
    void OnRequest(HttpRequest request, PendingAnswerPtr answer) override
    {
        if (request.url.path.front() == "forget") {
            return;
        }
        if (request.url.path.front() == "throw") {
            throw std::bad_alloc();
        }
        if (request.url.path.front() == "keep") {
            const std::lock_guard lock(mutex_);
            kept_ = std::move(answer);
            changed_.notify_all();
            return;
        }
        answer->Give({.contentType = "text/plain",
                      .body = std::make_shared<const std::string>("ok " + request.body)});
    }
    void OnSocketOpened(SocketNumber socket) override { Note(socket, true); }
    void OnSocketClosed(SocketNumber socket) override { Note(socket, false); }
    void OnSocketMessage(SocketNumber socket, std::string text) override
    {
        const std::string echo = text.size() < 100 ? text : "long";
        const Json message{{"type", "echo"}, {"text", echo}};
        server->Send(socket, std::make_shared<const std::string>(
                                 message.dump(-1, ' ', false, Json::error_handler_t::replace)));
        server->TakeNext(socket);
    }

    void AwaitSockets(std::size_t count)
    {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [&] { return sockets_.size() == count; });
    }
    PendingAnswerPtr AwaitKept()
    {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [&] { return kept_ != nullptr; });
        return std::move(kept_);
    }

    HttpServer* server = nullptr;

private:
    void Note(SocketNumber socket, bool open)
    {
        const std::lock_guard lock(mutex_);
        if (open) {
            sockets_.insert(socket);
        } else {
            sockets_.erase(socket);
        }
        changed_.notify_all();
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    std::set<SocketNumber> sockets_;
    PendingAnswerPtr kept_;
};

HttpServerOptions SmallBounds()
{
    HttpServerOptions options;
    options.mostBodyBytes = 5000;
    options.mostMessageBytes = 5000;
    return options;
}

class HttpServerTest : public testing::Test {
protected:
    explicit HttpServerTest(const HttpServerOptions& options = SmallBounds())
        : server(options, echo), address(server.Address())
    {
        echo.server = &server;
        server.Start();
    }

    void ExpectServes()
    {
        const HttpResult result = Get(address, "/x");
        EXPECT_EQ(result.status, 200);
        EXPECT_EQ(result.body, "ok ");
    }

    Echo echo;
    HttpServer server;
    const ServerAddress address;
};

TEST_F(HttpServerTest, SendsSecurityHeaders)
{
    const std::string name = "localhost:" + std::to_string(address.port);
    const HttpResult result =
        Exchange(address, "GET /" + address.token + "/x HTTP/1.1\r\nHost: " + name +
                              "\r\nOrigin: http://" + name + "\r\nConnection: close\r\n\r\n");
    EXPECT_EQ(result.status, 200);
    for (const char* header :
         {"Content-Security-Policy: default-src 'none'; script-src 'self'",
          "X-Content-Type-Options: nosniff", "Referrer-Policy: no-referrer",
          "Cross-Origin-Resource-Policy: same-origin", "Cache-Control: no-store"}) {
        EXPECT_THAT(result.header, HasSubstr(header));
    }
    EXPECT_EQ(Post(address, "/documents", "body").body, "ok body");
}

TEST_F(HttpServerTest, RefusesForeignAndMalformedRequests)
{
    const std::string token = "/" + address.token;
    const std::string host = "Host: " + address.host + "\r\n";
    const std::string origin = "Origin: http://" + address.host + "\r\n";
    const std::string upgrade = "Upgrade: websocket\r\nConnection: upgrade\r\n"
                                "Sec-WebSocket-Version: 13\r\n"
                                "Sec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\n";
    const auto get = [&](const std::string& target) {
        return "GET " + target + " HTTP/1.1\r\n" + host + "\r\n";
    };
    const std::string port = std::to_string(address.port);
    std::string wrongToken = address.token;
    wrongToken.back() = wrongToken.back() == '0' ? '1' : '0';
    const struct {
        std::string request;
        int status;
    } rows[] = {
        // The token.
        {get("/"), 403},
        {get("/x"), 403},
        {get("/" + wrongToken + "/x"), 403},
        {get("/" + address.token.substr(1) + "/x"), 403},
        {get(token + "x/x"), 403},
        {get("//" + address.token + "/x"), 403},
        {get("http://" + address.host + token + "/x"), 403},
        // Host and Origin.
        {"GET " + token + "/x HTTP/1.1\r\n\r\n", 403},
        {"GET " + token + "/x HTTP/1.1\r\nHost: evil.example\r\n\r\n", 403},
        {"GET " + token + "/x HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n", 403},
        {"GET " + token + "/x HTTP/1.1\r\nHost: evil.example:" + port + "\r\n\r\n", 403},
        {"GET " + token + "/x HTTP/1.1\r\n" + host + host + "\r\n", 403},
        {"GET " + token + "/x HTTP/1.1\r\n" + host + "Origin: http://evil.example\r\n\r\n", 403},
        {"GET " + token + "/x HTTP/1.1\r\n" + host + "Origin: null\r\n\r\n", 403},
        {"GET " + token + "/x HTTP/1.1\r\n" + host + "Origin: https://" + address.host + "\r\n\r\n",
         403},
        {"GET " + token + "/x HTTP/1.1\r\n" + host + "Origin: http://localhost:" + port +
             "\r\n\r\n",
         403},
        {"GET " + token + "/x HTTP/1.1\r\n" + host + origin + origin + "\r\n", 403},
        {"POST " + token + "/documents HTTP/1.1\r\n" + host + "Content-Length: 0\r\n\r\n", 403},
        {"GET " + token + "/socket HTTP/1.1\r\n" + host + upgrade + "\r\n", 403},
        {"GET " + token + "/socket HTTP/1.1\r\n" + host + upgrade +
             "Origin: http://evil.example\r\n\r\n",
         403},
        {"GET /socket HTTP/1.1\r\n" + host + origin + upgrade + "\r\n", 403},
        // Paths and methods.
        {get(token + "/../x"), 404},
        {get(token + "/a/%2e%2e/x"), 404},
        {get(token + "/a%2fx"), 404},
        {get(token + "/a\\x"), 404},
        {get(token + "/a%5cx"), 404},
        {get(token + "/.hidden"), 404},
        {get(token + "//x"), 404},
        {get(token + "/a%00"), 404},
        {get(token + "/a%0"), 404},
        {get(token + "/a%zz"), 404},
        {"PUT " + token + "/x HTTP/1.1\r\n" + host + "Content-Length: 0\r\n\r\n", 405},
        {"OPTIONS " + token + "/x HTTP/1.1\r\n" + host + "\r\n", 405},
        {"POST " + token + "/x HTTP/1.1\r\n" + host + origin + "Content-Length: 1\r\n\r\nx", 404},
        {"GET " + token + "/socket HTTP/1.1\r\n" + host + "\r\n", 400},
        {"GET " + token + "/x HTTP/1.1\r\n" + host + origin + upgrade + "\r\n", 400},
        // Form and size.
        {"GARBAGE\r\n\r\n", 400},
        {"GET " + token + "/x HTTP/7.7\r\n" + host + "\r\n", 400},
        {std::string("GET /\0 HTTP/1.1\r\n\r\n", 19), 400},
        {"GET " + token + "/x HTTP/1.1\r\n" + host + "Content-Length: 1\r\n\r\nx", 400},
        {"POST " + token + "/documents HTTP/1.1\r\n" + host + origin +
             "Content-Length: 5\r\nContent-Length: 6\r\n\r\nabcdef",
         400},
        {"POST " + token + "/documents HTTP/1.1\r\n" + host + origin +
             "Transfer-Encoding: chunked\r\n\r\nzzz\r\n",
         400},
        {"GET " + token + "/x HTTP/1.1\r\n" + host + "X: " + std::string(20'000, 'x') + "\r\n\r\n",
         431},
        {"GET /" + std::string(20'000, 'x') + " HTTP/1.1\r\n\r\n", 431},
        {"POST " + token + "/documents HTTP/1.1\r\n" + host + origin +
             "Content-Length: 5001\r\n\r\n",
         413},
        {"POST " + token + "/documents HTTP/1.1\r\n" + host + origin +
             "Transfer-Encoding: chunked\r\n\r\n1400\r\n" + std::string(0x1400, 'x') +
             "\r\n0\r\n\r\n",
         413},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.request.substr(0, 300));
        const HttpResult result = Exchange(address, row.request);
        EXPECT_EQ(result.status, row.status);
        EXPECT_EQ(result.body, "");
        EXPECT_THAT(result.header, HasSubstr("Content-Security-Policy"));
        ExpectServes();
    }
    for (const std::string& beginning : {"GET " + token, get(token + "/x").substr(0, 80),
                                         "POST " + token + "/documents HTTP/1.1\r\n" + host +
                                             origin + "Content-Length: 100\r\n\r\nabc"}) {
        BareConnection(address.port).Send(beginning);
        ExpectServes();
    }
}

class ImpatientServerTest : public HttpServerTest {
protected:
    ImpatientServerTest() : HttpServerTest(Options()) {}

    static HttpServerOptions Options()
    {
        HttpServerOptions options = SmallBounds();
        options.headerTime = std::chrono::milliseconds(50);
        options.bodyTime = std::chrono::milliseconds(50);
        return options;
    }
};

TEST_F(ImpatientServerTest, DisconnectsSlowSenders)
{
    for (const std::string& beginning :
         {std::string(), "GET /" + address.token,
          "POST /" + address.token + "/documents HTTP/1.1\r\nHost: " + address.host +
              "\r\nOrigin: http://" + address.host + "\r\nContent-Length: 100\r\n\r\nabc"}) {
        EXPECT_EQ(Exchange(address, beginning).status, 0) << beginning;
    }
}

class CrowdedServerTest : public HttpServerTest {
protected:
    CrowdedServerTest() : HttpServerTest(Options()) {}

    static HttpServerOptions Options()
    {
        HttpServerOptions options = SmallBounds();
        options.mostConnections = 2;
        return options;
    }
};

TEST_F(CrowdedServerTest, LimitsConnections)
{
    BrowserClient first(address);
    {
        BrowserClient second(address);
        echo.AwaitSockets(2);
        EXPECT_EQ(Exchange(address, "").status, 0);
    }
    echo.AwaitSockets(1);
    ExpectServes();
    // Who only connects, or begins a request, makes room for who asks.
    const BareConnection silent(address.port);
    BareConnection slow(address.port);
    slow.Send("GET /" + address.token);
    ExpectServes();
    first.SendText("still there");
    EXPECT_EQ(first.Read().at("text"), "still there");
}

TEST_F(HttpServerTest, ServesOnAfterAnException)
{
    BrowserClient client(address);
    echo.AwaitSockets(1);
    EXPECT_NE(Get(address, "/throw").status, 200);
    EXPECT_THROW(client.Read(), std::runtime_error);  // it may be the one that was struck
    echo.AwaitSockets(0);
    ExpectServes();
    BrowserClient again(address);
    again.SendText("back");
    EXPECT_EQ(again.Read().at("text"), "back");
}

TEST_F(HttpServerTest, AnswersRequestsOfOneConnectionInTurn)
{
    const std::string get =
        "GET /" + address.token + "/x HTTP/1.1\r\nHost: " + address.host + "\r\n";
    BareConnection connection(address.port);
    connection.Send(get + "\r\n" + get + "\r\n" + get + "Connection: close\r\n\r\n");
    const std::string answers = connection.ReadAll();
    std::size_t count = 0;
    for (std::size_t at = 0; (at = answers.find("ok ", at)) != std::string::npos; ++at) {
        ++count;
    }
    EXPECT_EQ(count, 3u);
}

TEST_F(HttpServerTest, CarriesMessagesAndClosesOnOversizedOrBinaryOnes)
{
    BrowserClient client(address);
    BrowserClient other(address);
    client.SendText("hello");
    EXPECT_EQ(client.Read().at("text"), "hello");
    client.SendText(std::string(5000, 'x'));
    EXPECT_EQ(client.Read().at("text"), "long");
    client.SendText(std::string(5001, 'x'));
    EXPECT_EQ(client.ReadClose(), 1009u);
    BrowserClient broken(address);
    broken.SendText("\xFF\xFE");
    EXPECT_EQ(broken.ReadClose(), 1007u);
    echo.AwaitSockets(1);
    other.SendText("still there");
    EXPECT_EQ(other.Read().at("text"), "still there");
    ExpectServes();
}

TEST_F(HttpServerTest, AnswersAbandonedRequestsAndStopsWithOpenConnections)
{
    EXPECT_EQ(Get(address, "/forget").status, 503);
    BrowserClient client(address);
    BareConnection waiting(address.port);
    waiting.Send("GET /" + address.token + "/keep HTTP/1.1\r\nHost: " + address.host + "\r\n\r\n");
    BareConnection idle(address.port);
    const PendingAnswerPtr owed = echo.AwaitKept();
    echo.AwaitSockets(1);
    server.Send(1, std::make_shared<const std::string>(R"({"type":"last"})"));
    std::thread reader([&] {
        EXPECT_EQ(client.Read().at("type"), "last");
        EXPECT_EQ(client.ReadClose(), 1001u);
    });
    server.Stop();
    server.Stop();
    reader.join();
    EXPECT_EQ(waiting.ReadAll(), "");
    EXPECT_EQ(idle.ReadAll(), "");
    owed->Give({});  // to nobody
}

TEST(AccessGuard, MakesATokenForEachRun)
{
    const std::string token = MakeToken();
    EXPECT_THAT(token, testing::MatchesRegex("[0-9a-f]+"));
    EXPECT_EQ(token.size(), 32u);
    EXPECT_NE(token, MakeToken());
}

TEST(Url, IsSplitAndDecoded)
{
    const auto url = ParseUrl("/a%20b/%D0%96?name=x%26y+z&empty=&alone&name=last");
    ASSERT_TRUE(url);
    EXPECT_THAT(url->path, testing::ElementsAre("a b", "Ж"));
    EXPECT_THAT(url->query,
                testing::ElementsAre(testing::Pair("alone", ""), testing::Pair("empty", ""),
                                     testing::Pair("name", "last")));
    EXPECT_THAT(ParseUrl("/a/?n=a%26b+c")->query,
                testing::ElementsAre(testing::Pair("n", "a&b c")));
    EXPECT_THAT(ParseUrl("/")->path, testing::ElementsAre(""));
    EXPECT_FALSE(ParseUrl("/a?n=%4"));
}

}  // namespace
}  // namespace WebTests
