#include "html-engine/internal/StartTagReader.h"

#include "html-engine/internal/Ascii.h"
#include "html-engine/internal/CharacterReference.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace HtmlEngine::Internal {

namespace {

// Of one tag the first so many attributes count.
constexpr std::size_t kMostAttributes = 512;

// What a byte may be.
constexpr unsigned kNameByte = 1U;         // of elements
constexpr unsigned kForeignNameByte = 2U;  // of foreign elements
constexpr unsigned kAttributeByte = 4U;    // of names of attributes
constexpr unsigned kBareByte = 8U;         // of values without quotes
constexpr unsigned kTagByte = 16U;         // may begin a tag
constexpr unsigned kEncodedByte = 32U;     // is not what it stands for

constexpr auto kBytes = [] {
    std::array<std::uint8_t, 256> bytes{};
    for (std::size_t code = 0; code < bytes.size(); ++code) {
        const char c = static_cast<char>(code);
        const auto isOneOf = [c](std::string_view set) {
            return set.find(c) != std::string_view::npos;
        };
        const bool isWord = IsAsciiLetter(c) || IsAsciiDigit(c);
        const bool isVisible = code > 0x20 && code != 0x7F;
        const unsigned uses = (isWord ? kNameByte : 0U) |
                              (isWord || isOneOf("-_.:") ? kForeignNameByte : 0U) |
                              (isVisible && !isOneOf("\"'/<=>") ? kAttributeByte : 0U) |
                              (isVisible && !isOneOf("\"'<>`") ? kBareByte : 0U) |
                              (c == '<' ? kTagByte : 0U) | (isOneOf("&\r") ? kEncodedByte : 0U);
        bytes[code] = static_cast<std::uint8_t>(uses);
    }
    return bytes;
}();

bool Is(unsigned use, char c)
{
    return (kBytes[static_cast<unsigned char>(c)] & use) != 0;
}

}  // namespace

StartTagReader::TagSet& StartTagReader::TagsLike(std::size_t at)
{
    std::uint64_t beginning = 0;
    std::memcpy(&beginning, html_.data() + at, std::min(sizeof beginning, html_.size() - at));
    return sets_[(beginning * 0x9E3779B97F4A7C15ULL) >> 59];
}

StartTag* StartTagReader::Read(std::size_t at, bool isForeign)
{
    ++at;
    if (std::exchange(isCollected_, false)) {
        collector_.Clear();
    }
    TagSet& set = TagsLike(at);
    const std::string_view rest = html_.substr(at);
    for (StartTag& tag : set.tags) {
        if (tag.model != kNoNode && tag.isForeign == isForeign && rest.starts_with(tag.written)) {
            return &tag;
        }
    }
    StartTag& tag = set.tags[set.oldest];
    if (!ReadNew(at, isForeign, tag)) {
        tag.model = kNoNode;
        return nullptr;
    }
    set.oldest = (set.oldest + 1) % kTagsPerSet;
    return &tag;
}

NodeId StartTagReader::MakeElement(StartTag& tag, std::uint8_t flags)
{
    if (tag.model != kNoNode) {
        tag.model = tree_.CreateElementLike(tag.model, flags);
    } else {
        lowerName_.assign(tag.name);
        if (!tag.isForeign) {
            std::ranges::transform(lowerName_, lowerName_.begin(), ToAsciiLower);
        }
        tag.model = tree_.CreateElement(lowerName_, flags);
        GiveAttributes(tag.model);
    }
    return tag.model;
}

void StartTagReader::GiveAttributes(NodeId element)
{
    tree_.SetAttributes(element, collector_.Entries());
    tree_.SetStates(element, collector_.States());
    collector_.Forget();
    isCollected_ = false;
}

bool StartTagReader::ReadNew(std::size_t at, bool isForeign, StartTag& tag)
{
    tag = {};
    tag.isForeign = isForeign;
    const unsigned use = isForeign ? kForeignNameByte : kNameByte;
    for (at_ = at; at_ < html_.size() && Is(use, html_[at_]); ++at_) {}
    tag.name = html_.substr(at, at_ - at);
    tag.place = IndexOfElement(tag.name);
    if (tag.place != kUnknownElement) {
        tag.traits = ElementAt(tag.place).traits;
    } else if (!isForeign) {
        return false;
    }
    if (!ReadAttributes(tag)) {
        return false;
    }
    tag.written = html_.substr(at, at_ - at);
    return true;
}

bool StartTagReader::ReadAttributes(StartTag& tag)
{
    names_.clear();
    bool isApart = SkipSpace();
    while (!IsAt('>') && !IsAt('/')) {
        const std::size_t from = at_;
        while (at_ < html_.size() && Is(kAttributeByte, html_[at_])) {
            ++at_;
        }
        const std::string_view name = html_.substr(from, at_ - from);
        if (name.empty() || !isApart) {
            return false;
        }
        isApart = SkipSpace();
        std::string_view value;
        if (IsAt('=')) {
            ++at_;
            SkipSpace();
            if (!ReadValue(tag, value)) {
                return false;
            }
            isApart = SkipSpace();
        }
        AddAttribute(name, value, tag);
    }
    return ReadEnd(tag);
}

bool StartTagReader::ReadEnd(StartTag& tag)
{
    tag.closesItself = IsAt('/');
    if (tag.closesItself) {
        ++at_;
        SkipSpace();
    }
    if (!IsAt('>')) {
        return false;
    }
    ++at_;
    return true;
}

bool StartTagReader::ReadValue(StartTag& tag, std::string_view& value)
{
    if (!IsAt('"') && !IsAt('\'')) {
        return ReadBareValue(value);
    }
    const char quote = html_[at_];
    const std::size_t from = ++at_;
    unsigned seen = 0;
    while (at_ < html_.size() && html_[at_] != quote) {
        seen |= kBytes[static_cast<unsigned char>(html_[at_++])];
    }
    value = html_.substr(from, at_ - from);
    tag.quotesMarkup = tag.quotesMarkup || (seen & kTagByte) != 0;
    if ((seen & kEncodedByte) != 0) {
        value = Decoded(value);
    }
    return at_++ < html_.size();
}

bool StartTagReader::ReadBareValue(std::string_view& value)
{
    const std::size_t from = at_;
    while (at_ < html_.size() && Is(kBareByte, html_[at_])) {
        ++at_;
    }
    value = Decoded(html_.substr(from, at_ - from));
    return !value.empty() && value.front() != '=' && at_ < html_.size() &&
           (IsAsciiSpace(html_[at_]) || IsAt('>'));
}

void StartTagReader::AddAttribute(std::string_view name, std::string_view value, StartTag& tag)
{
    const auto isSame = [&](std::string_view other) { return EqualsIgnoringCase(other, name); };
    if (names_.size() == kMostAttributes || std::ranges::any_of(names_, isSame)) {
        return;
    }
    names_.push_back(name);
    lowerName_.assign(name);
    if (!tag.isForeign && (tag.traits & ElementTrait::kForeignRoot) == 0) {
        std::ranges::transform(lowerName_, lowerName_.begin(), ToAsciiLower);
    }
    const bool isAsWritten = value.data() != decoded_.data();
    if (lowerName_ == "id" && isAsWritten) {
        tag.id = value;
    } else if (lowerName_ == "titleid" && isAsWritten) {
        tag.tooltipId = value;
    }
    collector_.Add(lowerName_, name, value);
    isCollected_ = true;
}

bool StartTagReader::SkipSpace()
{
    const std::size_t from = at_;
    while (at_ < html_.size() && IsAsciiSpace(html_[at_])) {
        ++at_;
    }
    return at_ != from;
}

std::string_view StartTagReader::Decoded(std::string_view value)
{
    std::size_t at = value.find_first_of("&\r");
    if (at == std::string_view::npos) {
        return value;
    }
    decoded_.clear();
    std::size_t copied = 0;
    for (; at != std::string_view::npos; at = value.find_first_of("&\r", at)) {
        const std::string_view rest = value.substr(at);
        decoded_.append(value, copied, at - copied);
        std::size_t length = 0;
        if (rest.front() == '\r') {
            decoded_ += '\n';
            length = rest.starts_with("\r\n") ? 2 : 1;
        } else {
            length = AppendCharacterReference(rest, decoded_);
        }
        copied = at + length;
        at += std::max<std::size_t>(length, 1);
    }
    return decoded_.append(value, copied);
}

}  // namespace HtmlEngine::Internal
