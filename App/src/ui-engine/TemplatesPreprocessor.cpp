#include "ui-engine/internal/TemplatesPreprocessor.h"

#include "service-common/ServiceObjectException.h"
#include "service-common/ServiceProvider.h"
#include "service-common/WideText.h"
#include "ui-engine/NarrowText.h"
#include "ui-engine/UIEngine.SO.h"

#include <boost/format.hpp>
#include <boost/regex.hpp>

#include <algorithm>
#include <array>
#include <iterator>
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

// Matches in order of their start, at most one for each: the one that was added first.
class MatchMap {
public:
    MatchMap() { matches_.reserve(16); }

    void Add(const Match& match)
    {
        auto place = matches_.end();
        while (place != matches_.begin() && std::prev(place)->start >= match.start) {
            --place;
        }
        if (place == matches_.end() || place->start != match.start) {
            matches_.insert(place, match);
        } else if (match.rule < place->rule) {
            *place = match;
        }
    }

    const std::vector<Match>& InOrder() const noexcept { return matches_; }

private:
    std::vector<Match> matches_;
};

// Looks for several ASCII literals in one pass over a text. Rules are added in their order.
class LiteralSearch {
public:
    explicit LiteralSearch(const std::wstring& text) : text_(text)
    {
        literals_.reserve(16);
        firstOf_.fill(kNone);
    }

    void Add(std::wstring_view literal, std::size_t rule)
    {
        const auto number = static_cast<std::int16_t>(literals_.size());
        literals_.push_back({literal, rule, 0, kNone});
        const auto first = static_cast<std::uint32_t>(literal.front());
        smallest_ = std::min(smallest_, first);
        largest_ = number == 0 ? first : std::max(largest_, first);
        std::int16_t* link = &firstOf_[first];
        while (*link != kNone) {
            link = &literals_[static_cast<std::size_t>(*link)].sameFirst;
        }
        *link = number;
    }

    void Run(MatchMap& matches)
    {
        const std::size_t size = text_.size();
        for (std::size_t at = 0; at < size;) {
            // Most blocks of a template hold no character that a placeholder begins with.
            if (size - at >= kBlock && !HoldsFirstCharacter(text_.data() + at)) {
                at += kBlock;
                continue;
            }
            for (const std::size_t end = std::min(size, at + kBlock); at < end; ++at) {
                MatchAt(at, matches);
            }
        }
    }

private:
    static constexpr std::size_t kAscii = 128;
    static constexpr std::size_t kBlock = 16;
    static constexpr std::int16_t kNone = -1;

    struct Literal {
        std::wstring_view text;
        std::size_t rule;
        std::size_t next;        // where its search goes on
        std::int16_t sameFirst;  // the next one that begins with the same character
    };

    // Whether a block may hold a first character: one between the smallest and the largest.
    bool HoldsFirstCharacter(const wchar_t* block) const
    {
        unsigned within = 0;
        for (std::size_t i = 0; i < kBlock; ++i) {
            within |= static_cast<std::uint32_t>(block[i]) - smallest_ <= largest_ - smallest_ ? 1u
                                                                                              : 0u;
        }
        return within != 0;
    }

    void MatchAt(std::size_t at, MatchMap& matches)
    {
        const auto first = static_cast<std::size_t>(text_[at]);
        if (first >= kAscii) {
            return;
        }
        for (std::int16_t i = firstOf_[first]; i != kNone;) {
            Literal& literal = literals_[static_cast<std::size_t>(i)];
            i = literal.sameFirst;
            const std::size_t length = literal.text.size();
            // Most of what begins alike differs at its end.
            if (at >= literal.next && length <= text_.size() - at &&
                text_[at + length - 1] == literal.text.back() &&
                text_.compare(at, length, literal.text) == 0) {
                matches.Add({at, length, literal.rule});
                literal.next = at + length;
            }
        }
    }

    const std::wstring& text_;
    std::vector<Literal> literals_;
    std::array<std::int16_t, kAscii> firstOf_;
    std::uint32_t smallest_ = kAscii;
    std::uint32_t largest_ = kAscii;
};

// Whether the placeholder matches nothing but its own text.
bool IsLiteral(std::wstring_view placeholder)
{
    const auto isPlain = [](wchar_t character) {
        return character == L'_' || (character >= L'A' && character <= L'Z') ||
               (character >= L'a' && character <= L'z') ||
               (character >= L'0' && character <= L'9');
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
    // A compiled placeholder: one without special characters matches its own text and is searched
    // for as such; only others need the expression machine.
    std::size_t literalStart = 0;   // in literals_
    std::size_t literalLength = 0;  // 0: an expression
    std::unique_ptr<const boost::wregex> expression;
    TemplateAction action;
    std::wstring value;
};

template <class Encoding>
TemplatesPreprocessorBase<Encoding>::TemplatesPreprocessorBase(std::wstring path)
    : path_(std::move(path))
{
    // Enough for any template of the panel.
    rules_.reserve(10);
    literals_.reserve(200);
}

template <class Encoding>
TemplatesPreprocessorBase<Encoding>::~TemplatesPreprocessorBase() = default;

template <class Encoding>
void TemplatesPreprocessorBase<Encoding>::AddRule(std::wstring_view placeholder,
                                                  TemplateAction action, std::wstring value)
{
    try {
        Rule rule{literals_.size(), 0, nullptr, action, std::move(value)};
        if (IsLiteral(placeholder)) {
            rule.literalLength = placeholder.size();
            literals_.append(placeholder);
        } else {
            rule.expression =
                std::make_unique<const boost::wregex>(placeholder.begin(), placeholder.end());
        }
        rules_.push_back(std::move(rule));
    } catch (const std::exception& failure) {
        FailProcessing(
            path_, failure,
            "details::TemplatesPreprocessorBase<struct details::UTF16_Bom_Strategy>::Do",
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

// Every rule's non-overlapping matches from left to right. Literals are looked for together, in one
// pass over the text that stops only where one of their first characters stands.
template <class Encoding>
auto TemplatesPreprocessorBase<Encoding>::CollectMatches(const std::wstring& text) const
{
    MatchMap matches;
    LiteralSearch literals(text);
    for (std::size_t i = 0; i < rules_.size(); ++i) {
        const Rule& rule = rules_[i];
        if (rule.literalLength != 0) {
            literals.Add({literals_.data() + rule.literalStart, rule.literalLength}, i);
            continue;
        }
        for (boost::wsregex_iterator it(text.begin(), text.end(), *rule.expression), end; it != end;
             ++it) {
            matches.Add({static_cast<std::size_t>(it->position()),
                         static_cast<std::size_t>(it->length()), i});
        }
    }
    literals.Run(matches);
    return matches;
}

template <class Encoding>
std::wstring TemplatesPreprocessorBase<Encoding>::Process(const std::uint8_t* data,
                                                          std::uint32_t size) const
{
    Encoding::CheckSize(data, size, path_);
    Encoding::CheckBom(data, path_);
    const std::wstring text = Encoding::Decode(data, size);

    const MatchMap matches = CollectMatches(text);
    if (matches.InOrder().empty()) {
        throw std::runtime_error("Nothing to process");
    }

    std::size_t capacity = text.size();
    for (const Rule& rule : rules_) {
        capacity += rule.value.size();
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
