// Validating reader for messages of browser clients: each value is read with its required type, and
// a message that does not match is rejected with one line. [any-thread]
#pragma once

#include "pdf-library/PDTypes.h"

#include <nlohmann/json.hpp>

#include <array>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace Workbench {

// A malformed message. The text names the value.
class MessageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

class ClientMessage {
public:
    // Throws MessageError for text that is not a JSON object. Unpaired surrogates become U+FFFD.
    explicit ClientMessage(const std::string& text);

    // Each throws MessageError for a missing value and for one of another type; those with an
    // optional result return nullopt for a missing value and for null.
    std::string Text(const char* name) const;
    std::uint64_t Number(const char* name) const;       // a whole number, 0 to 2^53
    std::uint32_t SmallNumber(const char* name) const;  // up to 2^32 - 1
    std::array<std::uint32_t, 2> NumberPair(const char* name) const;
    bool Flag(const char* name) const;
    std::optional<bool> OptionalFlag(const char* name) const;
    std::optional<std::string> OptionalText(const char* name) const;
    std::optional<std::uint64_t> OptionalNumber(const char* name) const;
    std::optional<_PDRect> OptionalRect(const char* name) const;  // [l,b,r,t], in order
    std::optional<std::vector<double>> OptionalCoordinates(const char* name) const;

private:
    const nlohmann::json* Find(const char* name) const;

    nlohmann::json json_;
};

}  // namespace Workbench
