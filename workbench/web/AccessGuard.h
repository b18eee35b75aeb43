// Who may speak to the workbench's server: requests below the run's token, under the server's own
// name, and from its own page. A page of another site can reach a port of this machine through the
// browser of the person who sits at it; it knows neither the token nor can it forge `Host` and
// `Origin`. [any-thread]
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Workbench {

// What of a request says where it comes from and where it goes. Borrowed.
struct RequestOrigin {
    std::string_view target;                // as the request line has it
    std::vector<std::string_view> hosts;    // every `Host` header
    std::vector<std::string_view> origins;  // every `Origin` header
    bool mustHaveOrigin = false;            // what changes something, and WebSockets
};

class AccessGuard {
public:
    AccessGuard(std::uint16_t port, std::string token);

    const std::string& Token() const noexcept { return token_; }

    // "http://127.0.0.1:PORT/TOKEN/".
    std::string Address() const;

    // The target below the token ("/app/page.js?x=1"; "" for the token alone); nothing when the
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
