#include "ui-engine/internal/TemplatesPreprocessor.h"

#include "service-common/ServiceObjectException.h"
#include "service-common/ServiceProvider.h"
#include "service-common/WideText.h"
#include "ui-engine/NarrowText.h"
#include "ui-engine/UIEngine.SO.h"

#include <boost/format.hpp>
#include <boost/regex.hpp>

#include <algorithm>
#include <map>
#include <memory>
#include <stdexcept>
#include <utility>

namespace details {
namespace {

constexpr const char* kSourceFile = "include/ui-engine/internal/TemplatesPreprocessor";
constexpr std::uint32_t kMarkSize = 2;
constexpr std::uint32_t kSmallestTemplate = 3;

[[noreturn]] void Fail(std::wstring message, const char* function, std::uint32_t line)
{
    throw ServiceObjectException(
        {kResultTemplateFailed, std::move(message), function, kSourceFile, line});
}

[[noreturn]] void FailProcessing(const std::wstring& path, const std::exception& failure,
                                 const char* function, std::uint32_t line)
{
    Fail((boost::wformat(L"Process htm-template \"%1%\" failed: %2%") % path %
          FromNarrow(failure.what()))
             .str(),
         function, line);
}

// Whether the placeholder matches nothing but its own text.
bool IsLiteral(std::wstring_view placeholder)
{
    const auto isPlain = [](wchar_t character) {
        return character == L'_' || (character >= L'A' && character <= L'Z') ||
               (character >= L'a' && character <= L'z') || (character >= L'0' && character <= L'9');
    };
    return !placeholder.empty() && std::all_of(placeholder.begin(), placeholder.end(), isPlain);
}

}  // namespace

void UTF16_Bom_Strategy::CheckSize(const std::uint8_t* data, std::uint32_t size,
                                   const std::wstring& path)
{
    if (data == nullptr || size < kSmallestTemplate) {
        Fail((boost::wformat(L"Fail to load htm-template \"%1%\"") % path).str(),
             "details::UTF16_Bom_Strategy::CheckSize", __LINE__);
    }
}

void UTF16_Bom_Strategy::CheckBom(const std::uint8_t* data, const std::wstring& path)
{
    if (data[0] != 0xFF || data[1] != 0xFE) {
        Fail((boost::wformat(L"The htm-template \"%1%\" should be saved using "
                             L"USC-2-Little-Endian (UTF-16-LE) encoding") %
              path)
                 .str(),
             "details::UTF16_Bom_Strategy::CheckBom", __LINE__);
    }
}

std::wstring UTF16_Bom_Strategy::Decode(const std::uint8_t* data, std::uint32_t size)
{
    return FromUtf16LittleEndian(data + kMarkSize, (size - kMarkSize) / sizeof(char16_t));
}

template <class Encoding>
struct TemplatesPreprocessorBase<Encoding>::Rule {
    std::wstring_view placeholder;
    std::unique_ptr<const boost::wregex> expression;  // null: searched for as plain text
    TemplateAction action;
    std::wstring_view value;
};

template <class Encoding>
TemplatesPreprocessorBase<Encoding>::TemplatesPreprocessorBase(std::wstring path)
    : path_(std::move(path)), hostPath_(ToUtf16(path_))
{
    rules_.reserve(10);  // enough for any template of the panel
}

template <class Encoding>
TemplatesPreprocessorBase<Encoding>::~TemplatesPreprocessorBase() = default;

template <class Encoding>
void TemplatesPreprocessorBase<Encoding>::AddRule(std::wstring_view placeholder,
                                                  TemplateAction action, std::wstring_view value)
{
    try {
        Rule rule{placeholder, nullptr, action, value};
        if (!IsLiteral(placeholder)) {
            rule.expression =
                std::make_unique<const boost::wregex>(placeholder.begin(), placeholder.end());
        }
        rules_.push_back(std::move(rule));
        data_.clear();
    } catch (const std::exception& failure) {
        FailProcessing(path_, failure,
                       "details::TemplatesPreprocessorBase<struct details::UTF16_Bom_Strategy>::Do",
                       __LINE__);
    }
}

template <class Encoding>
void TemplatesPreprocessorBase<Encoding>::SetRule(std::wstring_view placeholder,
                                                  TemplateAction action, std::wstring_view value)
{
    if (nextRule_ >= rules_.size() || rules_[nextRule_].placeholder != placeholder) {
        const auto rule = std::find_if(rules_.begin(), rules_.end(), [&](const Rule& one) {
            return one.placeholder == placeholder;
        });
        nextRule_ = static_cast<std::size_t>(rule - rules_.begin());
        if (rule == rules_.end()) {
            AddRule(placeholder, action, value);
        }
    }
    rules_[nextRule_].action = action;
    rules_[nextRule_].value = value;
    nextRule_ = (nextRule_ + 1) % rules_.size();
}

template <class Encoding>
std::wstring TemplatesPreprocessorBase<Encoding>::Do()
{
    std::wstring output;
    AppendTo(output);
    return output;
}

template <class Encoding>
void TemplatesPreprocessorBase<Encoding>::AppendTo(std::wstring& target)
{
    const std::size_t former = target.size();
    try {
        const auto engine = SP::QueryServiceObject<UIEngine>();
        BasicServiceObjectPtr<UIResources> resources;
        CallMethod<UIEngine::GetResources>(engine.Get(), resources.Receive());
        BasicServiceObjectPtr<UIResource> resource;
        CallMethod<UIResources::GetResource>(resources.Get(), hostPath_.c_str(),
                                             resource.Receive());
        if (!resource) {
            return;
        }
        const std::uint8_t* data = nullptr;
        std::uint32_t size = 0;
        CallMethod<UIResource::GetData>(resource.Get(), &data, &size);
        Process(data, size, target);
    } catch (const ServiceObjectException&) {
        target.resize(former);
        throw;
    } catch (const std::exception& failure) {
        target.resize(former);
        FailProcessing(path_, failure,
                       "details::TemplatesPreprocessorBase<struct details::UTF16_Bom_Strategy>::Do",
                       __LINE__);
    }
}

template <class Encoding>
void TemplatesPreprocessorBase<Encoding>::FindMatches(const std::uint8_t* data, std::uint32_t size)
{
    data_.clear();
    text_ = Encoding::Decode(data, size);
    std::map<std::size_t, Match> found;  // by start; of two that start together the first one found
    for (std::size_t i = 0; i < rules_.size(); ++i) {
        const auto add = [&](std::size_t start, std::size_t length) {
            found.try_emplace(start, Match{start, length, i});
        };
        if (rules_[i].expression != nullptr) {
            for (boost::wsregex_iterator it(text_.begin(), text_.end(), *rules_[i].expression), end;
                 it != end; ++it) {
                add(static_cast<std::size_t>(it->position()),
                    static_cast<std::size_t>(it->length()));
            }
            continue;
        }
        const std::wstring_view literal = rules_[i].placeholder;
        for (std::size_t at = text_.find(literal); at != text_.npos;
             at = text_.find(literal, at + literal.size())) {
            add(at, literal.size());
        }
    }
    matches_.clear();
    std::size_t cursor = 0;
    for (const auto& [start, match] : found) {
        if (start >= cursor) {  // not inside one that applies
            matches_.push_back(match);
            cursor = start + match.length;
        }
    }
    data_.assign(data, data + size);
}

template <class Encoding>
void TemplatesPreprocessorBase<Encoding>::Process(const std::uint8_t* data, std::uint32_t size,
                                                  std::wstring& target)
{
    Encoding::CheckSize(data, size, path_);
    Encoding::CheckBom(data, path_);
    if (!std::equal(data, data + size, data_.begin(), data_.end())) {
        FindMatches(data, size);
    }
    if (matches_.empty()) {
        throw std::runtime_error("Nothing to process");
    }

    std::size_t needed = target.size() + text_.size();
    for (const Rule& rule : rules_) {
        needed += rule.value.size();
    }
    if (target.capacity() < needed) {
        target.reserve(std::max(needed, 2 * target.size()));
    }
    std::size_t cursor = 0;
    for (const Match& match : matches_) {
        target.append(text_, cursor, match.start - cursor);
        const Rule& rule = rules_[match.rule];
        switch (rule.action) {
        case TemplateAction::kErase:
            break;
        case TemplateAction::kReplace:
            target.append(rule.value);
            break;
        case TemplateAction::kInsertBefore:
            target.append(rule.value).append(text_, match.start, match.length);
            break;
        case TemplateAction::kInsertAfter:
            target.append(text_, match.start, match.length).append(rule.value);
            break;
        default:
            throw std::logic_error("Undefined action type");
        }
        cursor = match.start + match.length;
    }
    target.append(text_, cursor);
}

template class TemplatesPreprocessorBase<UTF16_Bom_Strategy>;

}  // namespace details
