// Access control of the workbench's server: admits requests whose path begins with the run's token,
// whose `Host` is the server's own, and whose `Origin` is the server's own web page. It keeps out
// web pages of other sites, which can reach a local port through the user's browser but neither
// know the token nor can forge `Host` and `Origin`. [any-thread]
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Workbench {

// The parts of a request that name its origin and target. Borrowed.
struct RequestOrigin {
    std::string_view target;                // as in the request line
    std::vector<std::string_view> hosts;    // every `Host` header
    std::vector<std::string_view> origins;  // every `Origin` header
    bool mustHaveOrigin = false;            // for POST and WebSocket requests
};

class AccessGuard {
public:
    AccessGuard(std::uint16_t port, std::string token);

    const std::string& Token() const noexcept { return token_; }

    // "http://127.0.0.1:PORT/TOKEN/".
    std::string Address() const;

    // The target below the token ("/app/page.js?x=1"; "" for the token alone); nullopt when the
    // request is refused.
    std::optional<std::string_view> Admit(const RequestOrigin& request) const;

private:
    bool IsOwnHost(std::string_view host) const;

    const std::string token_;
    const std::vector<std::string> hosts_;
};

// 128 bits from the system's random source, in hexadecimal. Throws std::runtime_error.
std::string MakeToken();

}  // namespace Workbench
