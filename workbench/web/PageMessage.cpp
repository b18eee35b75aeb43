#include "web/PageMessage.h"

#include <array>
#include <cmath>
#include <limits>

namespace Workbench {

namespace {

[[noreturn]] void Fail(const char* name, const char* kind)
{
    throw MessageError(std::string("\"") + name + "\" must be " + kind);
}

// Looks at the outermost object's members, and reads no further than the first number "id".
class IdReader final : public nlohmann::json::json_sax_t {
public:
    std::optional<std::uint64_t> id;

    bool key(string_t& name) override
    {
        isId_ = depth_ == 1 && name == "id";
        return true;
    }
    bool number_unsigned(number_unsigned_t value) override
    {
        if (isId_) {
            id = value;
        }
        return !isId_;
    }
    bool start_object(std::size_t) override { return Enter(); }
    bool start_array(std::size_t) override { return Enter(); }
    bool end_object() override { return Leave(); }
    bool end_array() override { return Leave(); }
    bool null() override { return Pass(); }
    bool boolean(bool) override { return Pass(); }
    bool number_integer(number_integer_t) override { return Pass(); }
    bool number_float(number_float_t, const string_t&) override { return Pass(); }
    bool string(string_t&) override { return Pass(); }
    bool binary(binary_t&) override { return Pass(); }
    bool parse_error(std::size_t, const std::string&, const nlohmann::json::exception&) override
    {
        return false;
    }

private:
    bool Enter()
    {
        ++depth_;
        return Pass();
    }
    bool Leave()
    {
        --depth_;
        return Pass();
    }
    bool Pass()
    {
        isId_ = false;
        return true;
    }

    std::size_t depth_ = 0;
    bool isId_ = false;
};

}  // namespace

std::optional<std::uint64_t> CommandIdIn(const std::string& beginning)
{
    IdReader reader;
    nlohmann::json::sax_parse(beginning, &reader);
    return reader.id;
}

PageMessage::PageMessage(const std::string& text)
    : json_(nlohmann::json::parse(text, nullptr, false))
{
    if (!json_.is_object()) {
        throw MessageError("a message must be a JSON object");
    }
}

const nlohmann::json* PageMessage::Find(const char* name) const
{
    const auto found = json_.find(name);
    return found == json_.end() || found->is_null() ? nullptr : &*found;
}

std::string PageMessage::Text(const char* name) const
{
    std::optional<std::string> text = OptionalText(name);
    if (!text) {
        Fail(name, "a text");
    }
    return *std::move(text);
}

std::uint64_t PageMessage::Number(const char* name) const
{
    const std::optional<std::uint64_t> number = OptionalNumber(name);
    if (!number) {
        Fail(name, "a whole number");
    }
    return *number;
}

std::uint32_t PageMessage::SmallNumber(const char* name) const
{
    const std::uint64_t number = Number(name);
    if (number > std::numeric_limits<std::uint32_t>::max()) {
        Fail(name, "a smaller number");
    }
    return static_cast<std::uint32_t>(number);
}

bool PageMessage::Flag(const char* name) const
{
    const std::optional<bool> flag = OptionalFlag(name);
    if (!flag) {
        Fail(name, "true or false");
    }
    return *flag;
}

std::optional<bool> PageMessage::OptionalFlag(const char* name) const
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

std::optional<std::string> PageMessage::OptionalText(const char* name) const
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

std::optional<std::uint64_t> PageMessage::OptionalNumber(const char* name) const
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

std::optional<_PDRect> PageMessage::OptionalRect(const char* name) const
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
