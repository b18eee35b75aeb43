#include "ui-engine/internal/TemplatesPreprocessor.h"

#include "service-common/ServiceObjectException.h"
#include "service-common/ServiceProvider.h"
#include "service-common/WideText.h"
#include "ui-engine/NarrowText.h"
#include "ui-engine/UIEngine.SO.h"

#include <boost/format.hpp>
#include <boost/regex.hpp>

#include <algorithm>
#include <bit>
#include <iterator>
#include <limits>
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

constexpr std::size_t kBlock = 16;

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

// Matches in order of their start, at most one for each: the one whose rule was added first.
template <class Encoding>
class TemplatesPreprocessorBase<Encoding>::MatchMap {
public:
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

    // Those that apply: none that starts inside another which applies.
    std::vector<Match> Applied() const
    {
        std::vector<Match> applied;
        std::size_t cursor = 0;
        for (const Match& match : matches_) {
            if (match.start >= cursor) {
                applied.push_back(match);
                cursor = match.start + match.length;
            }
        }
        return applied;
    }

private:
    std::vector<Match> matches_;
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
    constexpr std::size_t kMostLiterals = std::numeric_limits<RuleBits>::digits;
    try {
        Rule rule{placeholder, nullptr, action, value};
        const bool literal = rules_.size() < kMostLiterals && IsLiteral(placeholder);
        if (!literal) {
            rule.expression =
                std::make_unique<const boost::wregex>(placeholder.begin(), placeholder.end());
        }
        rules_.push_back(std::move(rule));
        data_.clear();
        if (literal) {
            CompileLiteral(placeholder, RuleBits{1} << (rules_.size() - 1));
        }
    } catch (const std::exception& failure) {
        FailProcessing(path_, failure,
                       "details::TemplatesPreprocessorBase<struct details::UTF16_Bom_Strategy>::Do",
                       __LINE__);
    }
}

template <class Encoding>
void TemplatesPreprocessorBase<Encoding>::ChangeRule(std::size_t rule, TemplateAction action,
                                                     std::wstring_view value)
{
    rules_[rule].action = action;
    rules_[rule].value = value;
}

template <class Encoding>
void TemplatesPreprocessorBase<Encoding>::CompileLiteral(std::wstring_view literal, RuleBits bit)
{
    const auto first = static_cast<std::uint32_t>(literal.front());
    withFirst_[first] |= bit;
    smallestFirst_ = std::min(smallestFirst_, first);
    largestFirst_ = std::max(largestFirst_, first);
    if (literal.size() == 1) {
        ofOneCharacter_ |= bit;
    } else {
        withSecond_[static_cast<std::size_t>(literal[1])] |= bit;
    }
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

// Every match of a plain placeholder, those of one rule not overlapping, in one pass over the text
// that looks closer only where the first two characters of a placeholder stand.
template <class Encoding>
void TemplatesPreprocessorBase<Encoding>::FindLiterals(const std::wstring& text,
                                                       MatchMap& matches) const
{
    if (smallestFirst_ > largestFirst_) {
        return;  // there is none
    }
    const auto bits = [](const std::array<RuleBits, kAscii>& table, wchar_t character) {
        const auto index = static_cast<std::uint32_t>(character);
        return index < kAscii ? table[index] : 0;
    };
    std::size_t nextStarts[std::numeric_limits<RuleBits>::digits] = {};
    const wchar_t* const characters = text.c_str();
    const std::size_t size = text.size();
    for (std::size_t at = 0; at < size;) {
        // Most blocks of a template hold no character that a placeholder begins with.
        if (size - at >= kBlock && !MayHoldLiteral(characters + at)) {
            at += kBlock;
            continue;
        }
        for (const std::size_t end = std::min(size, at + kBlock); at < end; ++at) {
            // Behind the last character stands a NUL, which is second in no placeholder.
            const RuleBits candidates = bits(withFirst_, characters[at]) &
                                        (bits(withSecond_, characters[at + 1]) | ofOneCharacter_);
            if (candidates != 0) {
                MatchLiterals(candidates, text, at, nextStarts, matches);
            }
        }
    }
}

// Whether the block holds a character between the smallest and the largest first one.
template <class Encoding>
bool TemplatesPreprocessorBase<Encoding>::MayHoldLiteral(const wchar_t* block) const
{
    unsigned within = 0;
    for (std::size_t i = 0; i < kBlock; ++i) {
        const bool is =
            static_cast<std::uint32_t>(block[i]) - smallestFirst_ <= largestFirst_ - smallestFirst_;
        within |= is ? 1u : 0u;
    }
    return within != 0;
}

// Adds those of the candidates that stand at `at`. `nextStarts`: for each rule, where its search
// goes on.
template <class Encoding>
void TemplatesPreprocessorBase<Encoding>::MatchLiterals(RuleBits candidates,
                                                        const std::wstring& text, std::size_t at,
                                                        std::size_t* nextStarts,
                                                        MatchMap& matches) const
{
    for (; candidates != 0; candidates &= candidates - 1) {
        const auto rule = static_cast<std::size_t>(std::countr_zero(candidates));
        const std::wstring_view literal = rules_[rule].placeholder;
        if (at >= nextStarts[rule] && text.compare(at, literal.size(), literal) == 0) {
            matches.Add({at, literal.size(), rule});
            nextStarts[rule] = at + literal.size();
        }
    }
}

template <class Encoding>
void TemplatesPreprocessorBase<Encoding>::FindMatches(const std::uint8_t* data, std::uint32_t size)
{
    data_.clear();
    text_ = Encoding::Decode(data, size);
    MatchMap matches;
    for (std::size_t i = 0; i < rules_.size(); ++i) {
        if (rules_[i].expression == nullptr) {
            continue;
        }
        for (boost::wsregex_iterator it(text_.begin(), text_.end(), *rules_[i].expression), end;
             it != end; ++it) {
            matches.Add({static_cast<std::size_t>(it->position()),
                         static_cast<std::size_t>(it->length()), i});
        }
    }
    FindLiterals(text_, matches);
    matches_ = matches.Applied();
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
