// Any bytes as a template and any texts as rules: the preprocessor writes what a plain reading of
// its rules gives, or fails by the code of its own, and the same object does so for other bytes
// too.
//
// Input: the number of rules, for each its action, placeholder and value, then the template.

#include "../tests/fakes/FakeServiceObject.h"
#include "FuzzTarget.h"
#include "platform-libraries/ServiceProviderHost.h"
#include "service-common/ServiceObjectException.h"
#include "ui-engine/UIEngine.SO.h"
#include "ui-engine/internal/TemplatesPreprocessor.h"

#include <boost/regex.hpp>

#include <optional>
#include <set>
#include <tuple>
#include <vector>

namespace {

struct Rule {
    TemplateAction action;
    std::wstring placeholder;
    std::wstring value;
};
using Rules = std::vector<Rule>;
using Output = std::optional<std::wstring>;  // nothing: a failure

constexpr std::size_t kMostBytes = 1024;  // matching takes up to the square of it

// The host's engine, with the bytes at hand as every template.
struct Engine {
    Engine()
    {
        engine.On<UIEngine::GetResources>([this](UIResources** out) {
            *out = resources.HandOut();
            return kResultOk;
        });
        resources.On<UIResources::GetResource>([this](const char16_t*, UIResource** out) {
            *out = resource.HandOut();
            return kResultOk;
        });
        resource.On<UIResource::GetData>([this](const std::uint8_t** data, std::uint32_t* size) {
            *data = reinterpret_cast<const std::uint8_t*>(bytes.data());
            *size = static_cast<std::uint32_t>(bytes.size());
            return kResultOk;
        });
        VxHostRegisterService(UIEngine::kName, engine.Get());
    }
    ~Engine() { VxHostUnregisterAllServices(); }
    Engine(const Engine&) = delete;
    Engine& operator=(const Engine&) = delete;

    Fakes::Fake<UIEngine> engine;
    Fakes::Fake<UIResources> resources;
    Fakes::Fake<UIResource> resource;
    std::string_view bytes;
};

std::wstring Decoded(std::string_view bytes)
{
    const std::wstring wide = Widened(bytes);
    std::wstring text;
    for (std::size_t at = 2; at + 1 < wide.size(); at += 2) {
        const auto unit =
            static_cast<std::uint32_t>(wide[at]) | static_cast<std::uint32_t>(wide[at + 1]) << 8;
        const std::uint32_t last = text.empty() ? 0 : static_cast<std::uint32_t>(text.back());
        if (sizeof(wchar_t) > 2 && last >> 10 == 0x36 && unit >> 10 == 0x37) {
            text.back() = static_cast<wchar_t>(0x10000 + ((last & 0x3FF) << 10) + (unit & 0x3FF));
        } else {
            text.push_back(static_cast<wchar_t>(unit));
        }
    }
    return text;
}

Output Expected(const Rules& rules, std::string_view bytes)
{
    if (bytes.size() < 3 || bytes.substr(0, 2) != "\xFF\xFE") {
        return std::nullopt;
    }
    const std::wstring text = Decoded(bytes);
    std::set<std::tuple<std::size_t, std::size_t, std::size_t>> matches;  // start, rule, length
    std::wstring output;
    std::size_t done = 0;
    std::optional<std::size_t> last;
    try {
        for (std::size_t i = 0; i < rules.size(); ++i) {
            const boost::wregex expression(rules[i].placeholder);
            for (boost::wsregex_iterator it(text.begin(), text.end(), expression), end; it != end;
                 ++it) {
                matches.emplace(it->position(), i, it->length());
            }
        }
    } catch (const std::exception&) {
        return std::nullopt;
    }
    for (const auto& [start, rule, length] : matches) {
        if (start < done || start == last) {
            continue;
        }
        const auto& [action, placeholder, value] = rules[rule];
        const std::wstring match = text.substr(start, length);
        output += text.substr(done, start - done);
        done = start + length;
        last = start;
        switch (action) {
        case TemplateAction::kErase:
            break;
        case TemplateAction::kReplace:
            output += value;
            break;
        case TemplateAction::kInsertBefore:
            output += value + match;
            break;
        case TemplateAction::kInsertAfter:
            output += match + value;
            break;
        default:
            return std::nullopt;
        }
    }
    return last ? Output(output + text.substr(done)) : std::nullopt;
}

Output OutputOf(TemplatesPreprocessor& preprocessor, const Rules& rules, std::string_view input)
{
    std::wstring target = L"before";
    try {
        for (const Rule& rule : rules) {
            preprocessor.SetRule(rule.placeholder, rule.action, rule.value);
        }
        preprocessor.AppendTo(target);
        return target.substr(6);
    } catch (const ServiceObjectException& failure) {
        if (failure.Code() != 0x40009 || target != L"before") {
            EndWithFault("A failure has another code, or leaves output behind.", input);
        }
        return std::nullopt;
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static Engine engine;
    const std::string_view input = TextOf(data, size);
    if (size > kMostBytes) {
        return 0;
    }
    InputReader reader(input);
    Rules rules(reader.Byte() & 7);
    std::set<std::wstring> placeholders;
    for (Rule& rule : rules) {
        rule.action = static_cast<TemplateAction>(reader.Byte() & 7);
        rule.placeholder = Widened(reader.TextUntil('\n'));
        rule.value = Widened(reader.TextUntil('\n'));
        if (rule.placeholder.size() > 24 || !placeholders.insert(rule.placeholder).second) {
            return 0;
        }
    }
    TemplatesPreprocessor preprocessor(L"template.htm");
    const std::string_view bytes = reader.Rest();
    for (const std::size_t dropped : {0U, 0U, 2U}) {
        engine.bytes = bytes.substr(0, bytes.size() - std::min<std::size_t>(bytes.size(), dropped));
        if (OutputOf(preprocessor, rules, input) != Expected(rules, engine.bytes)) {
            EndWithFault("The output is not what the rules say.", input);
        }
    }
    return 0;
}
