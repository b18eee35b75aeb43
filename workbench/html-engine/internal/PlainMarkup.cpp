#include <html-engine/internal/PlainMarkup.h>

#include <algorithm>
#include <cstring>

#include <html-engine/internal/Ascii.h>
#include <html-engine/internal/CharacterReference.h>
#include <html-engine/internal/Utf8.h>

namespace HtmlEngine::Internal {

namespace {

// How an element must stand to be plain.
constexpr unsigned kBlock = 1;  // closes an open paragraph
constexpr unsigned kHeading = 2;
constexpr unsigned kItem = 4;  // closes an item around it, unless its list lies between
constexpr unsigned kList = 8;
constexpr unsigned kParagraph = 16;
constexpr unsigned kFormatting = 32;
constexpr unsigned kAlone = 64;  // closes one of its name around it
constexpr unsigned kVoid = 128;
constexpr unsigned kTable = 256;
constexpr unsigned kTableSection = 512;
constexpr unsigned kTableRow = 1024;
constexpr unsigned kTableCell = 2048;
constexpr unsigned kNotPlain = 4096;

constexpr unsigned kInsideOfTable = kTableSection | kTableRow | kTableCell;
constexpr unsigned kHoldsTableParts = kTable | kTableSection | kTableRow;

/// Of equal formatting elements inside each other a parser remembers this many.
constexpr std::uint32_t kMostEqualFormatting = 3;

/// Deeper markup is flattened by somebody else (see MarkupGuard).
constexpr std::size_t kMostOpen = 500;
constexpr std::size_t kMostAttributes = 64;

struct NameTraits {
    std::string_view name;
    unsigned traits;
};

// Sorted by name. A name that is not here belongs to an element without any peculiarity.
constexpr auto kNames = std::to_array<NameTraits>({
    {"a", kFormatting | kAlone},
    {"address", kBlock},
    {"applet", kNotPlain},
    {"area", kNotPlain},
    {"article", kBlock},
    {"aside", kBlock},
    {"b", kFormatting},
    {"base", kNotPlain},
    {"basefont", kNotPlain},
    {"bgsound", kNotPlain},
    {"big", kFormatting},
    {"blockquote", kBlock},
    {"body", kNotPlain},
    {"br", kVoid},
    {"button", kAlone},
    {"caption", kNotPlain},
    {"center", kBlock},
    {"code", kFormatting},
    {"col", kNotPlain},
    {"colgroup", kNotPlain},
    {"dd", kBlock | kItem},
    {"details", kBlock},
    {"dir", kBlock | kList},
    {"div", kBlock},
    {"dl", kBlock | kList},
    {"dt", kBlock | kItem},
    {"em", kFormatting},
    {"embed", kNotPlain},
    {"fieldset", kBlock},
    {"figcaption", kBlock},
    {"figure", kBlock},
    {"font", kFormatting},
    {"footer", kBlock},
    {"form", kNotPlain},
    {"frame", kNotPlain},
    {"frameset", kNotPlain},
    {"h1", kBlock | kHeading},
    {"h2", kBlock | kHeading},
    {"h3", kBlock | kHeading},
    {"h4", kBlock | kHeading},
    {"h5", kBlock | kHeading},
    {"h6", kBlock | kHeading},
    {"head", kNotPlain},
    {"header", kBlock},
    {"hgroup", kBlock},
    {"hr", kBlock | kVoid},
    {"html", kNotPlain},
    {"i", kFormatting},
    {"iframe", kNotPlain},
    {"image", kNotPlain},
    {"img", kVoid},
    {"input", kVoid},
    {"isindex", kNotPlain},
    {"keygen", kNotPlain},
    {"li", kBlock | kItem},
    {"link", kNotPlain},
    {"listing", kNotPlain},
    {"main", kBlock},
    {"marquee", kNotPlain},
    {"math", kNotPlain},
    {"menu", kBlock | kList},
    {"menuitem", kNotPlain},
    {"meta", kNotPlain},
    {"nav", kBlock},
    {"nobr", kNotPlain},
    {"noembed", kNotPlain},
    {"noframes", kNotPlain},
    {"noscript", kNotPlain},
    {"object", kNotPlain},
    {"ol", kBlock | kList},
    {"optgroup", kNotPlain},
    {"option", kNotPlain},
    {"p", kBlock | kParagraph},
    {"param", kNotPlain},
    {"plaintext", kNotPlain},
    {"pre", kNotPlain},
    {"rb", kNotPlain},
    {"rp", kNotPlain},
    {"rt", kNotPlain},
    {"rtc", kNotPlain},
    {"ruby", kNotPlain},
    {"s", kFormatting},
    {"script", kNotPlain},
    {"section", kBlock},
    {"select", kNotPlain},
    {"small", kFormatting},
    {"source", kNotPlain},
    {"strike", kFormatting},
    {"strong", kFormatting},
    {"style", kNotPlain},
    {"summary", kBlock},
    {"svg", kNotPlain},
    {"table", kBlock | kTable},
    {"tbody", kTableSection},
    {"td", kTableCell},
    {"template", kNotPlain},
    {"textarea", kNotPlain},
    {"tfoot", kTableSection},
    {"th", kTableCell},
    {"thead", kTableSection},
    {"title", kNotPlain},
    {"tr", kTableRow},
    {"track", kNotPlain},
    {"tt", kFormatting},
    {"u", kFormatting},
    {"ul", kBlock | kList},
    {"wbr", kVoid},
    {"xmp", kNotPlain},
});

static_assert(std::ranges::is_sorted(kNames, {}, &NameTraits::name));

constexpr std::size_t kLongestName = 10;
constexpr std::size_t kNoPlace = kNames.size();
constexpr std::string_view kTableBody = "tbody";

// What a byte may be.
constexpr std::uint8_t kTextByte = 1;  // stands for itself in text
constexpr std::uint8_t kNameByte = 2;  // of element names
constexpr std::uint8_t kAttributeNameByte = 4;
constexpr std::uint8_t kBareValueByte = 8;  // of values without quotes
constexpr std::uint8_t kDoubleQuotedByte = 16;
constexpr std::uint8_t kSingleQuotedByte = 32;

constexpr auto kBytes = [] {
    std::array<std::uint8_t, 256> bytes{};
    for (std::size_t code = 0; code < 0x7F; ++code) {
        const char c = static_cast<char>(code);
        const bool isWord = IsAsciiLetter(c) || IsAsciiDigit(c) || c == '-' || c == '_';
        const bool isVisible = code > 0x20;
        const auto isOneOf = [c](std::string_view set) {
            return set.find(c) != std::string_view::npos;
        };
        std::uint8_t uses = 0;
        if ((isVisible || isOneOf(" \t\n\f")) && c != '&') {
            uses |= c == '<' ? 0 : kTextByte;
            uses |= c == '"' ? 0 : kDoubleQuotedByte;
            uses |= c == '\'' ? 0 : kSingleQuotedByte;
        }
        if (isWord) {
            uses |= kNameByte;
        }
        if (isWord || isOneOf(".:")) {
            uses |= kAttributeNameByte;
        }
        if (isVisible && !isOneOf("\"'&<=>`")) {
            uses |= kBareValueByte;
        }
        bytes[code] = uses;
    }
    return bytes;
}();

bool Is(std::uint8_t use, char c)
{
    return (kBytes[static_cast<unsigned char>(c)] & use) != 0;
}

bool IsContinuation(char c)
{
    return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

/// Length of the character at the front, which is beyond ASCII; 0 when it is malformed or one that
/// HTML does not allow.
std::size_t AllowedCharacterLength(std::string_view text)
{
    const std::size_t length = CharacterLength(text);
    const auto byte = [&](std::size_t at) { return static_cast<unsigned char>(text[at]); };
    switch (length) {
    case 2:
        return byte(0) == 0xC2 && byte(1) < 0xA0 ? 0 : length;
    case 3: {
        const bool isNone =
            byte(0) == 0xEF &&
            ((byte(1) == 0xB7 && (byte(2) & 0xF0) >= 0x90 && (byte(2) & 0xF0) <= 0xA0) ||
             (byte(1) == 0xBF && byte(2) >= 0xBE));
        return isNone ? 0 : length;
    }
    case 4:
        return (byte(1) & 0x0F) == 0x0F && byte(2) == 0xBF && byte(3) >= 0xBE ? 0 : length;
    default:
        // Control characters.
        return 0;
    }
}

}  // namespace

PlainMarkup::Name PlainMarkup::NameOf(std::string_view name)
{
    if (name.size() > kLongestName) {
        return {0, kNoPlace};
    }
    std::array<char, kLongestName> buffer{};
    std::ranges::transform(name, buffer.begin(), ToAsciiLower);
    const std::string_view lower(buffer.data(), name.size());
    const auto found = std::ranges::lower_bound(kNames, lower, {}, &NameTraits::name);
    if (found == kNames.end() || found->name != lower) {
        return {0, kNoPlace};
    }
    return {found->traits, static_cast<std::size_t>(found - kNames.begin())};
}

bool PlainMarkup::IsPlainContext(std::string_view context)
{
    constexpr unsigned kOtherModes = kNotPlain | kTable | kInsideOfTable;
    return context == "body" || (NameOf(context).traits & kOtherModes) == 0;
}

bool PlainMarkup::Read(std::string_view html, std::string_view context, NodeRun& run)
{
    html_ = html;
    openCounts_.assign(kNames.size() + 1, 0);
    if (!IsPlainContext(context)) {
        return false;
    }
    const bool isPlain = ReadAll();
    collector_.Clear();
    if (!isPlain) {
        tree_.Dispose(top_);
        return false;
    }
    run = top_;
    return true;
}

bool PlainMarkup::ReadAll()
{
    while (!IsAtEnd()) {
        if (!BeginsTag(at_)) {
            if (!ReadText()) {
                return false;
            }
        } else if (!(html_[at_ + 1] == '/' ? ReadEndTag() : ReadStartTag())) {
            return false;
        }
    }
    return open_.empty();
}

bool PlainMarkup::BeginsTag(std::size_t at) const
{
    if (html_[at] != '<' || at + 1 == html_.size()) {
        return false;
    }
    const char next = html_[at + 1];
    return IsAsciiLetter(next) || next == '/' || next == '!' || next == '?';
}

// ---- Characters ----

bool PlainMarkup::ReadText()
{
    std::string_view text;
    if (!ReadCharacters('<', text)) {
        return false;
    }
    if ((TraitsAround() & kHoldsTableParts) != 0 && !std::ranges::all_of(text, IsAsciiSpace)) {
        return false;
    }
    Append(tree_.CreateCharacters(NodeKind::Text, text));
    return true;
}

bool PlainMarkup::SkipCharacters(std::uint8_t use)
{
    const char* at = html_.data() + at_;
    const char* const end = html_.data() + html_.size();
    const auto byte = [&](std::ptrdiff_t offset) { return static_cast<unsigned char>(at[offset]); };
    while (at != end) {
        if (Is(use, *at)) {
            ++at;
        } else if (end - at >= 2 && byte(0) > 0xC2 && byte(0) < 0xE0 && IsContinuation(at[1])) {
            at += 2;
        } else if (end - at >= 3 && byte(0) > 0xE0 && byte(0) < 0xED && IsContinuation(at[1]) &&
                   IsContinuation(at[2])) {
            at += 3;
        } else if (IsAscii(*at)) {
            break;
        } else {
            const std::size_t length = AllowedCharacterLength({at, end});
            if (length == 0) {
                return false;
            }
            at += length;
        }
    }
    at_ = static_cast<std::size_t>(at - html_.data());
    return true;
}

bool PlainMarkup::ReadCharacters(char stop, std::string_view& text)
{
    const std::uint8_t use = stop == '"'    ? kDoubleQuotedByte
                             : stop == '\'' ? kSingleQuotedByte
                                            : kTextByte;
    std::size_t from = at_;
    characters_.clear();
    while (true) {
        if (!SkipCharacters(use)) {
            return false;
        }
        if (IsAtEnd()) {
            if (stop != '<') {
                return false;
            }
            break;
        }
        const char c = html_[at_];
        if (c == stop && (stop != '<' || BeginsTag(at_))) {
            break;
        }
        if (c == '<') {
            ++at_;
        } else if (c == '&') {
            if (!ReadReference(from)) {
                return false;
            }
        } else if (c == '\r') {
            characters_.append(html_, from, at_ - from);
            characters_ += '\n';
            at_ += html_.substr(at_).starts_with("\r\n") ? 2U : 1U;
            from = at_;
        } else {
            // A control character.
            return false;
        }
    }
    text = html_.substr(from, at_ - from);
    if (!characters_.empty()) {
        characters_.append(text);
        text = characters_;
    }
    return true;
}

bool PlainMarkup::ReadReference(std::size_t& from)
{
    const CharacterReference reference = ReadCharacterReference(html_.substr(at_));
    switch (reference.kind) {
    case CharacterReference::Kind::None:
        ++at_;
        return true;
    case CharacterReference::Kind::Known:
        characters_.append(html_, from, at_ - from);
        AppendUtf8(reference.codePoint, characters_);
        at_ += reference.length;
        from = at_;
        return true;
    default:
        return false;
    }
}

// ---- Tags ----

bool PlainMarkup::SkipSpace()
{
    const std::size_t from = at_;
    while (!IsAtEnd() && IsAsciiSpace(html_[at_])) {
        ++at_;
    }
    return at_ != from;
}

PlainMarkup::KnownTags& PlainMarkup::TagsLike(std::size_t at)
{
    std::uint64_t beginning = 0;
    std::memcpy(&beginning, html_.data() + at, std::min(sizeof beginning, html_.size() - at));
    return known_[(beginning * 0x9E3779B97F4A7C15ULL) >> 59];
}

bool PlainMarkup::ReadStartTag()
{
    ++at_;
    KnownTags& set = TagsLike(at_);
    const std::string_view rest = html_.substr(at_);
    for (KnownTag& tag : set.tags) {
        if (!tag.written.empty() && rest.starts_with(tag.written)) {
            at_ += tag.written.size();
            return Open(tag);
        }
    }
    KnownTag& tag = set.tags[set.oldest];
    set.oldest = (set.oldest + 1) % kTagsPerSet;
    return ReadNewTag(tag) && Open(tag);
}

bool PlainMarkup::ReadNewTag(KnownTag& tag)
{
    const std::size_t from = at_;
    tag.written = {};
    while (!IsAtEnd() && Is(kNameByte, html_[at_])) {
        ++at_;
    }
    tag.name = html_.substr(from, at_ - from);
    tag.known = NameOf(tag.name);
    if ((tag.known.traits & kNotPlain) != 0 || !ReadAttributes(tag)) {
        return false;
    }
    tag.model = kNoNode;
    tag.written = html_.substr(from, at_ - from);
    return true;
}

bool PlainMarkup::ReadAttributes(KnownTag& tag)
{
    attributeNames_.clear();
    bool isApart = false;
    while (true) {
        isApart = SkipSpace() || isApart;
        const std::string_view rest = html_.substr(at_, 2);
        tag.closesItself = rest == "/>";
        if (tag.closesItself || rest.starts_with('>')) {
            at_ += tag.closesItself ? 2U : 1U;
            return true;
        }
        const std::size_t from = at_;
        while (!IsAtEnd() && Is(kAttributeNameByte, html_[at_])) {
            ++at_;
        }
        const std::string_view name = html_.substr(from, at_ - from);
        const auto isSame = [&](std::string_view other) { return EqualsIgnoringCase(other, name); };
        if (name.empty() || !isApart || attributeNames_.size() == kMostAttributes ||
            std::ranges::any_of(attributeNames_, isSame)) {
            return false;
        }
        attributeNames_.push_back(name);
        isApart = SkipSpace();
        std::string_view value;
        if (!IsAtEnd() && html_[at_] == '=') {
            ++at_;
            SkipSpace();
            isApart = false;
            if (!ReadValue(value)) {
                return false;
            }
        }
        lowerName_.assign(name);
        std::ranges::transform(lowerName_, lowerName_.begin(), ToAsciiLower);
        collector_.Add(lowerName_, name, value);
    }
}

bool PlainMarkup::ReadValue(std::string_view& value)
{
    if (IsAtEnd()) {
        return false;
    }
    if (const char quote = html_[at_]; quote == '"' || quote == '\'') {
        ++at_;
        if (!ReadCharacters(quote, value)) {
            return false;
        }
        ++at_;
        return true;
    }
    const std::size_t from = at_;
    while (!IsAtEnd() && Is(kBareValueByte, html_[at_])) {
        ++at_;
    }
    value = html_.substr(from, at_ - from);
    return !value.empty() && !IsAtEnd() && (IsAsciiSpace(html_[at_]) || html_[at_] == '>');
}

bool PlainMarkup::ReadEndTag()
{
    at_ += 2;
    const std::size_t from = at_;
    while (!IsAtEnd() && Is(kNameByte, html_[at_])) {
        ++at_;
    }
    const std::string_view name = html_.substr(from, at_ - from);
    SkipSpace();
    if (IsAtEnd() || html_[at_] != '>' || open_.empty()) {
        return false;
    }
    ++at_;
    // The end tags of rows and sections end what they name; that of a table ends its last section.
    if ((TraitsAround() & kTableSection) != 0 && EqualsIgnoringCase(name, "table")) {
        Pop();
    }
    if (!EqualsIgnoringCase(name, open_.back().name)) {
        return false;
    }
    Pop();
    return true;
}

// ---- Elements ----

unsigned PlainMarkup::TraitsAround() const
{
    // Around everything stands the fragment's own root, which ends the search for an open item.
    return open_.empty() ? kList : open_.back().known.traits;
}

bool PlainMarkup::MayStandHere(const KnownTag& tag) const
{
    const unsigned traits = tag.known.traits;
    const unsigned around = TraitsAround();
    const bool isVoid = (traits & kVoid) != 0;
    if ((tag.closesItself && !isVoid) || open_.size() >= kMostOpen) {
        return false;
    }
    if ((around & (kTable | kTableSection)) != 0) {
        return (traits & (kTableSection | kTableRow)) != 0;
    }
    if ((around & kTableRow) != 0) {
        return (traits & kTableCell) != 0;
    }
    const std::uint32_t equals = openCounts_[tag.known.place];
    const bool isRepaired =
        (traits & kInsideOfTable) != 0 || ((traits & kBlock) != 0 && openParagraphs_ > 0) ||
        ((traits & around & kHeading) != 0) || ((traits & kItem) != 0 && (around & kList) == 0) ||
        ((traits & kAlone) != 0 && equals > 0) ||
        ((traits & kFormatting) != 0 && equals >= kMostEqualFormatting);
    return !isRepaired;
}

bool PlainMarkup::Open(KnownTag& tag)
{
    if (!MayStandHere(tag)) {
        return false;
    }
    if ((TraitsAround() & kTable) != 0 && (tag.known.traits & kTableRow) != 0) {
        OpenTableBody();
    } else if ((TraitsAround() & tag.known.traits & kTableSection) != 0) {
        // The next section ends the one before.
        Pop();
    }
    const NodeId element =
        tag.model == kNoNode ? CreateElement(tag) : tree_.CreateElementLike(tag.model);
    tag.model = element;
    elements_.push_back(element);
    Append(element);
    if ((tag.known.traits & kVoid) == 0) {
        Push(element, tag.name, tag.known);
    }
    return true;
}

NodeId PlainMarkup::CreateElement(const KnownTag& tag)
{
    lowerName_.assign(tag.name);
    std::ranges::transform(lowerName_, lowerName_.begin(), ToAsciiLower);
    const NodeId element = tree_.CreateElement(lowerName_);
    tree_.SetAttributes(element, collector_.Entries());
    tree_.SetStates(element, collector_.States());
    collector_.Forget();
    return element;
}

void PlainMarkup::OpenTableBody()
{
    const NodeId body = tree_.CreateElement(kTableBody);
    elements_.push_back(body);
    Append(body);
    Push(body, kTableBody, NameOf(kTableBody));
}

void PlainMarkup::Append(NodeId node)
{
    if (open_.empty()) {
        tree_.Append(kNoNode, top_, node);
    } else {
        const NodeId parent = open_.back().element;
        NodeRun content = tree_.ContentOf(parent);
        tree_.Append(parent, content, node);
    }
}

void PlainMarkup::Push(NodeId element, std::string_view name, Name known)
{
    open_.push_back({element, name, known});
    ++openCounts_[known.place];
    openParagraphs_ += (known.traits & kParagraph) != 0 ? 1U : 0U;
}

void PlainMarkup::Pop()
{
    const Name known = open_.back().known;
    open_.pop_back();
    --openCounts_[known.place];
    openParagraphs_ -= (known.traits & kParagraph) != 0 ? 1U : 0U;
}

}  // namespace HtmlEngine::Internal
