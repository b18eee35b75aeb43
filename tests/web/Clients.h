// Clients of the workbench's server: a bare connection that may send anything, and a page with its
// WebSocket. Everything waits, but no longer than a minute.
#pragma once

#include "TreeCopy.h"

#include <nlohmann/json.hpp>

#include <cstdint>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace WebTests {

using Json = nlohmann::json;

// "http://127.0.0.1:PORT/TOKEN/" taken apart.
struct ServerAddress {
    explicit ServerAddress(const std::string& address);

    std::string host;  // "127.0.0.1:PORT"
    std::uint16_t port = 0;
    std::string token;
};

class BareConnection {
public:
    explicit BareConnection(std::uint16_t port);
    ~BareConnection();
    BareConnection(const BareConnection&) = delete;
    BareConnection& operator=(const BareConnection&) = delete;

    // False when the server has closed.
    bool Send(std::string_view bytes);
    // What comes until the server closes.
    std::string ReadAll();

private:
    int descriptor_;
};

struct HttpResult {
    int status = 0;  // 0: closed without an answer
    std::string header;
    std::string body;
};

// Sends bytes, and reads what comes until the server closes.
HttpResult Exchange(const ServerAddress& server, std::string_view request);

// A valid request of the web page for a path below the token.
HttpResult Get(const ServerAddress& server, const std::string& path);
HttpResult Post(const ServerAddress& server, const std::string& path, const std::string& body);

class BrowserClient {
public:
    explicit BrowserClient(const ServerAddress& server);
    ~BrowserClient();
    BrowserClient(const BrowserClient&) = delete;
    BrowserClient& operator=(const BrowserClient&) = delete;

    void Send(const Json& message) { SendText(message.dump()); }
    void SendText(const std::string& text);
    void SendBinary(const std::string& bytes);

    // The next message, which has been applied to what is below. Throws std::runtime_error when the
    // server closes.
    Json Read();
    // Reads until a message fits; that one.
    Json ReadUntil(const std::function<bool(const Json&)>& fits);
    // Reads until the server closes; the code that it gives.
    unsigned ReadClose();

    // Sends a command and reads until its reply. Everything that it changed has come before.
    Json Command(const std::string& name, Json arguments = Json::object());
    // Reads until everything has come that messages sent so far have changed.
    void Fence();

    Json Document(std::uint64_t id) const;
    std::vector<std::uint64_t> Ids() const;

    TreeCopy tree;
    bool seesAll = true;  // asks for all rows of all lists, again after each change
    Json documents;       // the last message of that type, with the changes since
    std::string locale;
    std::vector<Json> others;  // messages of other types, oldest first; replies left out

private:
    class Socket;

    void AskForRows(const Json& message);

    std::unique_ptr<Socket> socket_;
    std::set<std::uint64_t> asked_;  // lists whose rows have not come
    std::uint64_t lastCommand_ = 0;
};

}  // namespace WebTests
