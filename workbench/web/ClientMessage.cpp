#include "web/ClientMessage.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <string_view>

namespace Workbench {

namespace {

constexpr std::size_t kUnitLength = 6;  // of "\uXXXX"

[[noreturn]] void Fail(const char* name, const char* kind)
{
    throw MessageError(std::string("\"") + name + "\" must be " + kind);
}

// The code unit of an escape "\uXXXX" at a place of JSON text; nullopt for anything else.
std::optional<std::uint16_t> EscapedUnit(std::string_view text, std::size_t at)
{
    std::uint16_t unit = 0;
    if (at + kUnitLength > text.size() || text.substr(at, 2) != "\\u") {
        return std::nullopt;
    }
    const char* const end = text.data() + at + kUnitLength;
    const auto [rest, error] = std::from_chars(text.data() + at + 2, end, unit, 16);
    return error == std::errc() && rest == end ? std::optional(unit) : std::nullopt;
}

// Browsers write an unpaired surrogate as an escape, which the JSON reader rejects: U+FFFD takes
// its place.
std::string WithoutLoneSurrogates(std::string text)
{
    const auto isIn = [](std::optional<std::uint16_t> unit, unsigned first) {
        return unit && *unit >= first && *unit < first + 0x400;
    };
    for (std::size_t at = 0; (at = text.find('\\', at)) != std::string::npos;) {
        const auto unit = EscapedUnit(text, at);
        if (isIn(unit, 0xD800) && isIn(EscapedUnit(text, at + kUnitLength), 0xDC00)) {
            at += 2 * kUnitLength;
        } else if (isIn(unit, 0xD800) || isIn(unit, 0xDC00)) {
            text.replace(at, kUnitLength, "\\ufffd");
            at += kUnitLength;
        } else {
            at += 2;
        }
    }
    return text;
}

}  // namespace

ClientMessage::ClientMessage(const std::string& text)
    : json_(nlohmann::json::parse(text, nullptr, false))
{
    if (json_.is_discarded()) {
        json_ = nlohmann::json::parse(WithoutLoneSurrogates(text), nullptr, false);
    }
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

std::array<std::uint32_t, 2> ClientMessage::NumberPair(const char* name) const
{
    const nlohmann::json* const value = Find(name);
    std::array<std::uint32_t, 2> pair{};
    const auto isSmall = [](const nlohmann::json& number) {
        return number.is_number_unsigned() &&
               number.get<std::uint64_t>() <= std::numeric_limits<std::uint32_t>::max();
    };
    if (value == nullptr || !value->is_array() || value->size() != pair.size() ||
        !std::ranges::all_of(*value, isSmall)) {
        Fail(name, "two whole numbers");
    }
    return {(*value)[0], (*value)[1]};
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

std::optional<std::vector<double>> ClientMessage::OptionalCoordinates(const char* name) const
{
    constexpr double kMost = 1e6;
    const nlohmann::json* const value = Find(name);
    if (value == nullptr) {
        return std::nullopt;
    }
    if (!value->is_array()) {
        Fail(name, "an array of numbers");
    }
    std::vector<double> numbers;
    for (const nlohmann::json& item : *value) {
        numbers.push_back(item.is_number() ? item.get<double>() : kMost);
        if (!(std::fabs(numbers.back()) < kMost)) {
            Fail(name, "an array of numbers");
        }
    }
    return numbers;
}

std::optional<_PDRect> ClientMessage::OptionalRect(const char* name) const
{
    const auto sides = OptionalCoordinates(name);
    if (!sides) {
        return std::nullopt;
    }
    if (sides->size() != 4) {
        Fail(name, "four numbers");
    }
    const std::vector<double>& s = *sides;
    if (s[0] > s[2] || s[1] > s[3]) {
        Fail(name, "left, bottom, right, top");
    }
    return _PDRect{s[0], s[1], s[2], s[3]};
}

}  // namespace Workbench
