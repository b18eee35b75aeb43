#include "web/ClientMessage.h"

#include <array>
#include <cmath>
#include <limits>

namespace Workbench {

namespace {

[[noreturn]] void Fail(const char* name, const char* kind)
{
    throw MessageError(std::string("\"") + name + "\" must be " + kind);
}

}  // namespace

ClientMessage::ClientMessage(const std::string& text)
    : json_(nlohmann::json::parse(text, nullptr, false))
{
    if (!json_.is_object()) {
        throw MessageError("a message must be a JSON object");
    }
}

const nlohmann::json* ClientMessage::Find(const char* name) const
{
    const auto found = json_.find(name);
    return found == json_.end() || found->is_null() ? nullptr : &*found;
}

std::string ClientMessage::Text(const char* name) const
{
    std::optional<std::string> text = OptionalText(name);
    if (!text) {
        Fail(name, "a text");
    }
    return *std::move(text);
}

std::uint64_t ClientMessage::Number(const char* name) const
{
    const std::optional<std::uint64_t> number = OptionalNumber(name);
    if (!number) {
        Fail(name, "a whole number");
    }
    return *number;
}

std::uint32_t ClientMessage::SmallNumber(const char* name) const
{
    const std::uint64_t number = Number(name);
    if (number > std::numeric_limits<std::uint32_t>::max()) {
        Fail(name, "a smaller number");
    }
    return static_cast<std::uint32_t>(number);
}

bool ClientMessage::Flag(const char* name) const
{
    const std::optional<bool> flag = OptionalFlag(name);
    if (!flag) {
        Fail(name, "true or false");
    }
    return *flag;
}

std::optional<bool> ClientMessage::OptionalFlag(const char* name) const
{
    const nlohmann::json* const value = Find(name);
    if (value == nullptr) {
        return std::nullopt;
    }
    if (!value->is_boolean()) {
        Fail(name, "true or false");
    }
    return value->get<bool>();
}

std::optional<std::string> ClientMessage::OptionalText(const char* name) const
{
    const nlohmann::json* const value = Find(name);
    if (value == nullptr) {
        return std::nullopt;
    }
    if (!value->is_string()) {
        Fail(name, "a text");
    }
    return value->get<std::string>();
}

std::optional<std::uint64_t> ClientMessage::OptionalNumber(const char* name) const
{
    constexpr std::uint64_t kMost = std::uint64_t{1} << 53;
    const nlohmann::json* const value = Find(name);
    if (value == nullptr) {
        return std::nullopt;
    }
    if (!value->is_number_unsigned() || value->get<std::uint64_t>() > kMost) {
        Fail(name, "a whole number");
    }
    return value->get<std::uint64_t>();
}

std::optional<_PDRect> ClientMessage::OptionalRect(const char* name) const
{
    constexpr double kMost = 1e6;
    const nlohmann::json* const value = Find(name);
    if (value == nullptr) {
        return std::nullopt;
    }
    std::array<double, 4> sides{};
    if (!value->is_array() || value->size() != sides.size()) {
        Fail(name, "four numbers");
    }
    for (std::size_t i = 0; i < sides.size(); ++i) {
        const nlohmann::json& side = (*value)[i];
        sides[i] = side.is_number() ? side.get<double>() : kMost;
        if (!(std::fabs(sides[i]) < kMost)) {
            Fail(name, "four numbers");
        }
    }
    if (sides[0] > sides[2] || sides[1] > sides[3]) {
        Fail(name, "left, bottom, right, top");
    }
    return _PDRect{sides[0], sides[1], sides[2], sides[3]};
}

}  // namespace Workbench
