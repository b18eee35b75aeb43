#include "web/AccessGuard.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <stdexcept>
#include <utility>

namespace Workbench {

namespace {

// Comparison in constant time, so that its duration reveals nothing about the token.
bool AreEqual(std::string_view left, std::string_view right)
{
    if (left.size() != right.size()) {
        return false;
    }
    unsigned difference = 0;
    for (std::size_t i = 0; i < left.size(); ++i) {
        difference |= static_cast<unsigned>(left[i] ^ right[i]);
    }
    return difference == 0;
}

}  // namespace

AccessGuard::AccessGuard(std::uint16_t port, std::string token)
    : token_(std::move(token)),
      hosts_{"127.0.0.1:" + std::to_string(port), "localhost:" + std::to_string(port)}
{
}

std::string AccessGuard::Address() const
{
    return "http://" + hosts_.front() + "/" + token_ + "/";
}

bool AccessGuard::IsOwnHost(std::string_view host) const
{
    return std::find(hosts_.begin(), hosts_.end(), host) != hosts_.end();
}

std::optional<std::string_view> AccessGuard::Admit(const RequestOrigin& request) const
{
    constexpr std::string_view kScheme = "http://";
    if (request.hosts.size() != 1 || !IsOwnHost(request.hosts.front())) {
        return std::nullopt;
    }
    if (request.origins.size() > 1 || (request.origins.empty() && request.mustHaveOrigin)) {
        return std::nullopt;
    }
    for (const std::string_view origin : request.origins) {
        if (!origin.starts_with(kScheme) ||
            origin.substr(kScheme.size()) != request.hosts.front()) {
            return std::nullopt;
        }
    }
    const std::string_view target = request.target;
    if (target.size() <= token_.size() || target.front() != '/' ||
        !AreEqual(target.substr(1, token_.size()), token_)) {
        return std::nullopt;
    }
    const std::string_view below = target.substr(1 + token_.size());
    return below.empty() || below.front() == '/' ? std::optional(below) : std::nullopt;
}

std::string MakeToken()
{
    std::array<unsigned char, 16> bytes{};
    if (::getentropy(bytes.data(), bytes.size()) != 0) {
        throw std::runtime_error("the system has no random numbers");
    }
    constexpr const char* kDigits = "0123456789abcdef";
    std::string token;
    for (const unsigned char byte : bytes) {
        token += kDigits[byte >> 4];
        token += kDigits[byte & 15];
    }
    return token;
}

}  // namespace Workbench
