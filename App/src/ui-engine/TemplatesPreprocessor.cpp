#include "ui-engine/internal/TemplatesPreprocessor.h"

#include "service-common/ServiceObjectException.h"
#include "service-common/ServiceProvider.h"
#include "service-common/WideText.h"
#include "ui-engine/NarrowText.h"
#include "ui-engine/UIEngine.SO.h"

#include <boost/format.hpp>
#include <boost/regex.hpp>

#include <algorithm>
#include <cstring>
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

struct Match {
    std::size_t start;
    std::size_t length;
    std::size_t rule;
};

// Matches in order of their start, at most one for each.
class MatchMap {
public:
    // A start that is taken keeps the match it has.
    void Add(const Match& match)
    {
        const auto place = std::lower_bound(
            matches_.begin(), matches_.end(), match.start,
            [](const Match& present, std::size_t start) { return present.start < start; });
        if (place == matches_.end() || place->start != match.start) {
            matches_.insert(place, match);
        }
    }

    const std::vector<Match>& InOrder() const noexcept { return matches_; }

private:
    std::vector<Match> matches_;
};

}  // namespace

// A compiled placeholder. One without special characters matches its own text and is searched for
// as such; only others need the expression machine.
class TemplatePattern {
public:
    explicit TemplatePattern(std::wstring_view placeholder) : literal_(placeholder)
    {
        constexpr std::wstring_view kSpecial = L".[{}()\\*+?|^$";
        if (placeholder.empty() || placeholder.find_first_of(kSpecial) != placeholder.npos) {
            expression_ =
                std::make_unique<const boost::wregex>(placeholder.begin(), placeholder.end());
        }
    }

    // Calls found(start, length) for all non-overlapping matches from left to right.
    template <class Found>
    void ForEachMatch(const std::wstring& text, Found found) const
    {
        if (expression_) {
            for (boost::wsregex_iterator it(text.begin(), text.end(), *expression_), end; it != end;
                 ++it) {
                found(static_cast<std::size_t>(it->position()),
                      static_cast<std::size_t>(it->length()));
            }
            return;
        }
        for (std::size_t at = text.find(literal_); at != text.npos;
             at = text.find(literal_, at + literal_.size())) {
            found(at, literal_.size());
        }
    }

private:
    std::wstring literal_;
    std::unique_ptr<const boost::wregex> expression_;  // null: the literal
};

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
    // Resources need not be aligned.
    std::u16string units((size - kMarkSize) / sizeof(char16_t), u'\0');
    std::memcpy(units.data(), data + kMarkSize, units.size() * sizeof(char16_t));
    return FromUtf16(units);
}

template <class Encoding>
struct TemplatesPreprocessorBase<Encoding>::Rule {
    TemplatePattern pattern;
    TemplateAction action;
    std::wstring value;
};

template <class Encoding>
TemplatesPreprocessorBase<Encoding>::TemplatesPreprocessorBase(std::wstring path)
    : path_(std::move(path))
{
}

template <class Encoding>
TemplatesPreprocessorBase<Encoding>::~TemplatesPreprocessorBase() = default;

template <class Encoding>
void TemplatesPreprocessorBase<Encoding>::AddRule(std::wstring_view placeholder,
                                                  TemplateAction action, std::wstring value)
{
    try {
        rules_.push_back({TemplatePattern(placeholder), action, std::move(value)});
    } catch (const std::exception& failure) {
        FailProcessing(
            path_, failure,
            "details::TemplatesPreprocessorBase<struct details::UTF16_Bom_Strategy>::AddRule",
            __LINE__);
    }
}

template <class Encoding>
std::wstring TemplatesPreprocessorBase<Encoding>::Do() const
{
    try {
        const auto engine = SP::QueryServiceObject<UIEngine>();
        BasicServiceObjectPtr<UIResources> resources;
        CallMethod<UIEngine::GetResources>(engine.Get(), resources.Receive());
        BasicServiceObjectPtr<UIResource> resource;
        CallMethod<UIResources::GetResource>(resources.Get(), ToUtf16(path_).c_str(),
                                             resource.Receive());
        if (!resource) {
            return {};
        }
        const std::uint8_t* data = nullptr;
        std::uint32_t size = 0;
        CallMethod<UIResource::GetData>(resource.Get(), &data, &size);
        return Process(data, size);
    } catch (const ServiceObjectException&) {
        throw;
    } catch (const std::exception& failure) {
        FailProcessing(path_, failure,
                       "details::TemplatesPreprocessorBase<struct details::UTF16_Bom_Strategy>::Do",
                       __LINE__);
    }
}

template <class Encoding>
std::wstring TemplatesPreprocessorBase<Encoding>::Process(const std::uint8_t* data,
                                                          std::uint32_t size) const
{
    Encoding::CheckSize(data, size, path_);
    Encoding::CheckBom(data, path_);
    const std::wstring text = Encoding::Decode(data, size);

    std::size_t capacity = text.size();
    MatchMap matches;
    for (std::size_t i = 0; i < rules_.size(); ++i) {
        capacity += rules_[i].value.size();
        rules_[i].pattern.ForEachMatch(text, [&](std::size_t start, std::size_t length) {
            matches.Add({start, length, i});
        });
    }
    if (matches.InOrder().empty()) {
        throw std::runtime_error("Nothing to process");
    }

    std::wstring output;
    output.reserve(capacity);
    std::size_t cursor = 0;
    for (const Match& match : matches.InOrder()) {
        if (match.start < cursor) {
            continue;  // inside a match already applied
        }
        output.append(text, cursor, match.start - cursor);
        const Rule& rule = rules_[match.rule];
        switch (rule.action) {
        case TemplateAction::kErase:
            break;
        case TemplateAction::kReplace:
            output.append(rule.value);
            break;
        case TemplateAction::kInsertBefore:
            output.append(rule.value).append(text, match.start, match.length);
            break;
        case TemplateAction::kInsertAfter:
            output.append(text, match.start, match.length).append(rule.value);
            break;
        default:
            throw std::logic_error("Undefined action type");
        }
        cursor = match.start + match.length;
    }
    output.append(text, cursor);
    return output;
}

template class TemplatesPreprocessorBase<UTF16_Bom_Strategy>;

}  // namespace details
