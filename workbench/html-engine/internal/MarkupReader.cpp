#include "html-engine/internal/MarkupReader.h"

#include "html-engine/internal/Ascii.h"
#include "html-engine/internal/CharacterReference.h"
#include "html-engine/internal/Utf8.h"

#include <algorithm>
#include <array>
#include <utility>

namespace HtmlEngine::Internal {

namespace {

using namespace ElementTrait;

constexpr std::uint32_t kDeepest = 512;
// How far around an end tag in foreign content looks for its element.
constexpr std::size_t kForeignReach = 512;

constexpr std::string_view kTableBody = "tbody";
constexpr std::string_view kTableRowName = "tr";
constexpr std::string_view kColumnGroup = "colgroup";

constexpr auto kIsPlainText = [] {
    std::array<bool, 256> isPlain{};
    isPlain.fill(true);
    for (const char c : {'<', '&', '\r'}) {
        isPlain[static_cast<unsigned char>(c)] = false;
    }
    return isPlain;
}();

// Elements of SVG and MathML whose content is HTML.
bool HoldsHtml(std::string_view name)
{
    constexpr std::string_view kNames[] = {"foreignobject", "desc", "title", "mi", "mo", "mn", "ms",
                                           "mtext"};
    return std::ranges::any_of(
        kNames, [&](std::string_view known) { return EqualsIgnoringCase(known, name); });
}

// How deep in its table a part lies.
int TableLevel(ElementTraits traits)
{
    return (traits & kTable) != 0          ? 0
           : (traits & kTableSection) != 0 ? 1
           : (traits & kTableRow) != 0     ? 2
                                           : 3;
}

}  // namespace

MarkupReader::MarkupReader(Tree& tree, std::string_view html)
    : tree_(tree),
      html_(RepairUtf8(html, repaired_)),
      tags_(tree, html_),
      tooltips_(html_),
      innermost_(KnownElementCount(), kNone)
{
}

NodeRun MarkupReader::ReadContent(const MarkupContext& context)
{
    OpenElement around;
    around.name = context.name;
    around.flags = context.flags;
    around.depth = context.depth;
    const std::size_t place = IndexOfElement(context.name);
    if (place != kUnknownElement && (context.flags & NodeFlag::kForeign) == 0) {
        around.traits = ElementAt(place).traits;
    }
    if ((around.traits & (kTable | kTablePart)) != 0) {
        around.tablePart = 0;
    }
    around.optionalFrom = 1;
    open_.push_back(around);
    if ((around.traits & (kRawText | kEscapableText)) != 0) {
        ReadRawText(around.traits, html_.size());
    }
    ReadAll();
    return top_;
}

NodeId MarkupReader::ReadPage()
{
    stage_ = PageStage::BeforeHead;
    pageRoot_ = tree_.CreateElement("html");
    pageHead_ = tree_.CreateElement("head");
    pageBody_ = tree_.CreateElement("body");
    Append(pageRoot_, pageHead_);
    OpenElement around;
    around.element = pageHead_;
    around.depth = 2;
    around.optionalFrom = 1;
    open_.push_back(around);
    ReadAll();
    EnterBody();
    return pageRoot_;
}

void MarkupReader::ReadAll()
{
    while (at_ < html_.size()) {
        if (html_[at_] != '<' || !ReadMarkup()) {
            ReadText(html_.size());
        }
    }
    FlushText();
}

bool MarkupReader::ReadMarkup()
{
    const std::string_view rest = html_.substr(at_);
    if (rest.size() < 2) {
        return false;
    }
    switch (rest[1]) {
    case '/':
        return ReadEndTag();
    case '!':
        return rest.starts_with("<!--") ? ReadComment() : ReadDoctype() || ReadCData();
    default:
        return IsAsciiLetter(rest[1]) && ReadStartTag();
    }
}

// ---- Text ----

void MarkupReader::ReadText(std::size_t end)
{
    const char c = html_[at_];
    std::size_t from = at_++;
    if (c == '&') {
        std::string decoded;
        if (const std::size_t length = AppendCharacterReference(html_.substr(from), decoded)) {
            AddDecoded(decoded);
            at_ = from + length;
            return;
        }
    } else if (c == '\r') {
        // Of a line break of two characters the second stays.
        if (at_ == html_.size() || html_[at_] != '\n') {
            AddDecoded("\n");
            return;
        }
        from = at_;
    }
    const char* const text = html_.data();
    std::size_t at = at_;
    while (at < end && kIsPlainText[static_cast<unsigned char>(text[at])]) {
        ++at;
    }
    at_ = at;
    AddText(html_.substr(from, at - from));
}

void MarkupReader::AddText(std::string_view text)
{
    if (textParent_ != Current()) {
        FlushText();
        textParent_ = Current();
    }
    if (!textSlice_.empty() && textSlice_.data() + textSlice_.size() == text.data()) {
        textSlice_ = {textSlice_.data(), textSlice_.size() + text.size()};
    } else {
        textBuffer_ += textSlice_;
        textSlice_ = text;
    }
}

void MarkupReader::AddDecoded(std::string_view text)
{
    AddText({});
    textBuffer_ += text;
}

void MarkupReader::FlushText()
{
    if (textBuffer_.empty()) {
        AppendText(std::exchange(textSlice_, {}));
        return;
    }
    textBuffer_ += std::exchange(textSlice_, {});
    AppendText(textBuffer_);
    textBuffer_.clear();
}

void MarkupReader::AppendText(std::string_view text)
{
    if (stage_ != PageStage::Body && textParent_ == open_.front().element) {
        // White space stays where it is in a page without a body; anything else begins the body.
        const auto isSpace = [](char c) { return IsAsciiSpace(c); };
        const auto space =
            static_cast<std::size_t>(std::ranges::find_if_not(text, isSpace) - text.begin());
        if (space > 0 && stage_ != PageStage::BeforeHead) {
            Append(textParent_, tree_.CreateCharacters(NodeKind::Text, text.substr(0, space)));
        }
        text.remove_prefix(space);
        if (!text.empty()) {
            EnterBody();
            textParent_ = pageBody_;
        }
    }
    if (!text.empty()) {
        Append(textParent_, tree_.CreateCharacters(NodeKind::Text, text));
    }
}

void MarkupReader::SkipLineBreak()
{
    const std::string_view rest = html_.substr(at_);
    at_ += rest.starts_with("\r\n")                           ? 2U
           : rest.starts_with('\n') || rest.starts_with('\r') ? 1U
                                                              : 0U;
}

// ---- What must come to an end ----

std::size_t MarkupReader::Bound()
{
    std::size_t bound = kNowhere;
    if (owner_.place != kNone) {
        bound = owner_.hasTooltip ? tooltips_.End(owner_.name, at_)
                                  : tooltips_.Beginning(owner_.tooltipId, at_);
    }
    return std::min(bound, html_.size());
}

std::size_t MarkupReader::FindEnd(std::string_view end, std::size_t from)
{
    const std::size_t bound = Bound();
    const auto known = std::ranges::find(missing_, end, [](const auto& row) { return row.first; });
    if (known != missing_.end() && bound <= known->second) {
        return kNowhere;
    }
    const std::string_view text = html_.substr(0, bound);
    const auto isSame = [](char left, char right) {
        return ToAsciiLower(left) == ToAsciiLower(right);
    };
    const auto found =
        std::search(text.begin() + static_cast<std::ptrdiff_t>(std::min(from, bound)), text.end(),
                    end.begin(), end.end(), isSame);
    if (found != text.end()) {
        return static_cast<std::size_t>(found - text.begin());
    }
    if (known == missing_.end()) {
        missing_.emplace_back(end, bound);
    } else {
        known->second = bound;
    }
    return kNowhere;
}

std::size_t MarkupReader::FindRawTextEnd(const StartTag& tag, std::size_t from)
{
    const std::string_view name = ElementAt(tag.place).name;
    const std::string end = "</" + std::string(name);
    std::size_t at = FindEnd(end, from);
    while (at != kNowhere && !tooltips_.IsEndTagNext(name, at)) {
        at = FindEnd(end, at + 1);
    }
    return at;
}

bool MarkupReader::ReadComment()
{
    constexpr std::string_view kBeginning = "<!--";
    constexpr std::string_view kEnd = "-->";
    const std::size_t from = at_ + kBeginning.size();
    const std::size_t end = FindEnd(kEnd, from);
    if (end == kNowhere) {
        return false;
    }
    FlushText();
    if (stage_ != PageStage::BeforeHead) {
        const std::string_view text = html_.substr(from, end - from);
        Append(Current(), tree_.CreateCharacters(NodeKind::Comment, text));
    }
    at_ = end + kEnd.size();
    return true;
}

bool MarkupReader::ReadDoctype()
{
    constexpr std::string_view kBeginning = "<!doctype";
    const std::string_view rest = html_.substr(at_);
    const std::size_t end = rest.find_first_of("<>", 1);
    if (!EqualsIgnoringCase(rest.substr(0, kBeginning.size()), kBeginning) ||
        end == std::string_view::npos || rest[end] != '>') {
        return false;
    }
    at_ += end + 1;
    return true;
}

bool MarkupReader::ReadCData()
{
    constexpr std::string_view kBeginning = "<![CDATA[";
    constexpr std::string_view kEnd = "]]>";
    const std::size_t from = at_ + kBeginning.size();
    if (!IsForeign() || !html_.substr(at_).starts_with(kBeginning)) {
        return false;
    }
    const std::size_t end = FindEnd(kEnd, from);
    if (end == kNowhere) {
        return false;
    }
    AddText(html_.substr(from, end - from));
    at_ = end + kEnd.size();
    return true;
}

// ---- Start tags ----

bool MarkupReader::IsForeign() const
{
    const OpenElement& around = open_.back();
    return (around.flags & NodeFlag::kForeign) != 0 && !HoldsHtml(around.name);
}

bool MarkupReader::ReadStartTag()
{
    StartTag* tag = tags_.Read(at_, IsForeign());
    if (tag == nullptr) {
        return false;
    }
    if (IsTooltipOfOwner(*tag)) {
        BeginTooltip();
        tag = tag->isForeign ? tags_.Read(at_, false) : tag;
    }
    const std::size_t end = at_ + 1 + tag->written.size();
    if (tag->quotesMarkup && end > Bound()) {
        return false;
    }
    std::size_t rawEnd = kNowhere;
    const bool isRaw = !tag->isForeign && (tag->traits & (kRawText | kEscapableText)) != 0;
    if (isRaw) {
        rawEnd = FindRawTextEnd(*tag, end);
        if (rawEnd == kNowhere) {
            return false;
        }
    }
    at_ = end;
    if (stage_ != PageStage::Body && open_.size() == 1) {
        FlushText();
        EnterStageOf(tag->traits);
    }
    if (!IsPageStructure(*tag)) {
        Open(*tag);
    }
    if (!tag->isForeign && (tag->traits & kDropsLineBreak) != 0) {
        SkipLineBreak();
    }
    if (isRaw) {
        ReadRawText(tag->traits, rawEnd);
        CloseFrom(open_.size() - 1);
        at_ = html_.find('>', rawEnd) + 1;
    }
    return true;
}

void MarkupReader::Open(StartTag& tag)
{
    if ((tag.traits & kTablePart) != 0 && !tag.isForeign) {
        if (!MakeRoomForTablePart(tag.traits)) {
            return;
        }
    } else if (!tag.isForeign) {
        EndImplied(tag.traits);
    }
    std::uint8_t flags = tag.isForeign ? open_.back().flags : 0;
    if (!tag.isForeign && (tag.traits & kForeignRoot) != 0) {
        flags = tag.name.size() == 4 ? NodeFlag::kForeign | NodeFlag::kMathMl : NodeFlag::kForeign;
    }
    const bool isVoid = tag.isForeign || (tag.traits & kForeignRoot) != 0
                            ? tag.closesItself
                            : (tag.traits & kVoid) != 0;
    const std::size_t place = tag.isForeign ? kUnknownElement : tag.place;
    if (open_.back().depth >= kDeepest && !isVoid) {
        Push(Current(), tag.name, place, flags, tag.tooltipId);
        return;
    }
    FlushText();
    const NodeId element = tags_.MakeElement(tag, flags);
    elements_.push_back(element);
    Append(Current(), element);
    if (!isVoid) {
        Push(element, tag.name, place, flags, tag.tooltipId);
    }
}

void MarkupReader::ReadRawText(ElementTraits traits, std::size_t end)
{
    while (at_ < end) {
        if (html_[at_] == '&' && (traits & kEscapableText) == 0) {
            AddText(html_.substr(at_++, 1));
        } else {
            ReadText(end);
        }
    }
}

bool MarkupReader::IsTooltipOfOwner(const StartTag& tag) const
{
    return owner_.place != kNone && !owner_.hasTooltip && tag.place != kUnknownElement &&
           (tag.traits & kTooltip) != 0 && tag.id == owner_.tooltipId;
}

void MarkupReader::BeginTooltip()
{
    CloseFrom(owner_.place + 1);
    owner_.hasTooltip = true;
}

void MarkupReader::EndImplied(ElementTraits traits)
{
    const auto endIf = [&](ElementTraits ended) {
        const auto innermost = static_cast<Level>(open_.size() - 1);
        if ((open_.back().traits & ended) != 0 && innermost > 0 && !IsOwned(innermost)) {
            CloseFrom(innermost);
        }
    };
    if ((traits & kBlock) != 0) {
        endIf(kParagraph);
    }
    if ((traits & (kListItem | kDefinition | kRubyText)) != 0) {
        endIf(traits & (kListItem | kDefinition | kRubyText));
    }
    if ((traits & kRubyContainer) != 0) {
        endIf(kRubyText);
        endIf(kRubyContainer);
    }
    if ((traits & (kOption | kOptionGroup)) != 0) {
        endIf(kOption);
    }
    if ((traits & kOptionGroup) != 0) {
        endIf(kOptionGroup);
    }
}

bool MarkupReader::MakeRoomForTablePart(ElementTraits traits)
{
    const bool isRowOrCell = (traits & (kTableRow | kTableCell)) != 0;
    const int level = isRowOrCell ? TableLevel(traits) : 1;
    Level around = open_.back().tablePart;
    while (around != kNone && TableLevel(open_[around].traits) >= level) {
        if ((traits & kTableColumn) != 0 && open_[around].name == kColumnGroup) {
            break;
        }
        if (around == 0 || IsOwned(around)) {
            return false;
        }
        CloseFrom(around);
        around = open_.back().tablePart;
    }
    if (around == kNone) {
        return (open_.back().traits & kTemplate) != 0;
    }
    CloseFrom(around + 1);
    const int holder = TableLevel(open_.back().traits);
    if (isRowOrCell && holder == 0) {
        OpenImplied(kTableBody);
    }
    if (level == 3 && holder < 2) {
        OpenImplied(kTableRowName);
    }
    if ((traits & kTableColumn) != 0 && holder == 0) {
        OpenImplied(kColumnGroup);
    }
    return true;
}

void MarkupReader::OpenImplied(std::string_view name)
{
    const std::size_t place = IndexOfElement(name);
    if (open_.back().depth >= kDeepest) {
        Push(Current(), name, place, 0, {});
        return;
    }
    FlushText();
    const NodeId element = tree_.CreateElement(name);
    elements_.push_back(element);
    Append(Current(), element);
    Push(element, name, place, 0, {});
}

void MarkupReader::Push(NodeId element, std::string_view name, std::size_t place,
                        std::uint8_t flags, std::string_view tooltipId)
{
    const auto at = static_cast<Level>(open_.size());
    OpenElement& opened = open_.emplace_back();
    const OpenElement& around = open_[at - 1];
    opened.name = name;
    opened.element = element;
    opened.flags = flags;
    opened.depth = around.depth + (element == around.element ? 0U : 1U);
    if (place != kUnknownElement) {
        opened.place = static_cast<Level>(place);
        opened.traits = ElementAt(place).traits;
        opened.namesake = std::exchange(innermost_[place], at);
    }
    const bool isBarrier = (opened.traits & kBarrier) != 0;
    const bool isTablePart = (opened.traits & (kTable | kTablePart)) != 0;
    const bool isApart = (opened.traits & (kBarrier | kTemplate)) != 0;
    opened.barrier = isBarrier ? at : around.barrier;
    opened.tablePart = isTablePart ? at : isApart ? kNone : around.tablePart;
    opened.optionalFrom =
        (opened.traits & kOptionalEnd) != 0 ? std::min(around.optionalFrom, at) : at + 1;
    if (!tooltipId.empty() && owner_.place == kNone) {
        owner_ = {at, false, name, tooltipId};
    }
}

// ---- End tags ----

bool MarkupReader::ReadEndTag()
{
    const std::size_t from = at_ + 2;
    const OpenElement& innermost = open_.back();
    const bool isForeign = (innermost.flags & NodeFlag::kForeign) != 0;
    // Nearly every end tag is that of the innermost element.
    const std::size_t end = from + innermost.name.size();
    if (!isForeign && end < html_.size() && html_[end] == '>' &&
        html_.substr(from, innermost.name.size()) == innermost.name && open_.size() > 1 &&
        open_.size() - 1 != owner_.place && (innermost.traits & kTooltip) == 0) {
        at_ = end + 1;
        CloseInnermost();
        return true;
    }
    const auto isOfName = [&](char c) {
        return IsAsciiLetter(c) || IsAsciiDigit(c) ||
               (isForeign && std::string_view("-_.:").find(c) != std::string_view::npos);
    };
    std::size_t at = from;
    while (at < html_.size() && isOfName(html_[at])) {
        ++at;
    }
    const std::string_view name = html_.substr(from, at - from);
    while (at < html_.size() && IsAsciiSpace(html_[at])) {
        ++at;
    }
    const std::size_t place = IndexOfElement(name);
    if (name.empty() || at == html_.size() || html_[at] != '>' ||
        (place == kUnknownElement && !isForeign)) {
        return false;
    }
    at_ = at + 1;
    Close(name, place);
    return true;
}

void MarkupReader::Close(std::string_view name, std::size_t place)
{
    if (place != kUnknownElement && (ElementAt(place).traits & kTooltip) != 0 &&
        owner_.hasTooltip && tooltips_.IsEndTagNext(owner_.name, at_)) {
        CloseFrom(owner_.place + 1);
        return;
    }
    if (place != kUnknownElement && stage_ < PageStage::AfterHead && open_.size() == 1 &&
        EqualsIgnoringCase(name, "head")) {
        FlushText();
        if (stage_ != PageStage::Body) {  // which the text may have begun
            stage_ = PageStage::AfterHead;
            open_.front().element = pageRoot_;
        }
    }
    const Level nearest = NearestOpen(name, place);
    if (nearest != kNone && MayEnd(nearest)) {
        CloseFrom(nearest);
    }
}

auto MarkupReader::NearestOpen(std::string_view name, std::size_t place) const -> Level
{
    std::size_t reach = kForeignReach;
    for (auto at = static_cast<Level>(open_.size() - 1);
         at > 0 && reach > 0 && (open_[at].flags & NodeFlag::kForeign) != 0; --at, --reach) {
        if (EqualsIgnoringCase(open_[at].name, name)) {
            return at;
        }
    }
    return place == kUnknownElement ? kNone : innermost_[place];
}

bool MarkupReader::IsOwned(Level at)
{
    return owner_.place != kNone && owner_.place >= at &&
           (owner_.hasTooltip || tooltips_.Beginning(owner_.tooltipId, at_) != kNowhere);
}

bool MarkupReader::MayEnd(Level at)
{
    const bool isInTooltip = owner_.place != kNone && owner_.hasTooltip;
    const bool isImplied = open_.back().optionalFrom <= at + 1 && !isInTooltip;
    if (open_.back().barrier > at && !isImplied) {
        return false;
    }
    if (!IsOwned(at)) {
        return true;
    }
    // Only once its tooltip has ended.
    static const std::size_t kTooltipPlace = IndexOfElement("popup");
    const Level tooltip = innermost_[kTooltipPlace];
    return owner_.hasTooltip && (tooltip == kNone || tooltip < owner_.place);
}

void MarkupReader::CloseFrom(std::size_t first)
{
    while (open_.size() > first) {
        CloseInnermost();
    }
    if (owner_.place != kNone && owner_.place >= first) {
        owner_ = {};
    }
}

void MarkupReader::CloseInnermost()
{
    const OpenElement& closed = open_.back();
    if (closed.place != kNone) {
        innermost_[closed.place] = closed.namesake;
    }
    open_.pop_back();
}

// ---- Pages ----

void MarkupReader::EnterStageOf(ElementTraits traits)
{
    if ((traits & kHeadContent) != 0 && stage_ < PageStage::AfterHead) {
        stage_ = PageStage::Head;
    } else if ((traits & kPageStructure) == 0) {
        EnterBody();
    }
}

bool MarkupReader::IsPageStructure(const StartTag& tag)
{
    if ((tag.traits & kPageStructure) == 0 || tag.isForeign) {
        return false;
    }
    const std::string_view name = ElementAt(tag.place).name;
    if (name == "body") {
        EnterBody();
    } else if (name == "head" && stage_ == PageStage::BeforeHead) {
        stage_ = PageStage::Head;
    }
    const NodeId element = name == "html"   ? pageRoot_
                           : name == "head" ? pageHead_
                           : name == "body" ? pageBody_
                                            : kNoNode;
    if (element != kNoNode && tree_.Nodes()[element].element.attributes.Entries().empty()) {
        tags_.GiveAttributes(element);
    }
    return true;
}

void MarkupReader::EnterBody()
{
    if (stage_ == PageStage::Body) {
        return;
    }
    stage_ = PageStage::Body;
    Append(pageRoot_, pageBody_);
    open_.front().element = pageBody_;
}

void MarkupReader::Append(NodeId parent, NodeId node)
{
    if (parent == kNoNode) {
        tree_.Append(kNoNode, top_, node);
    } else {
        NodeRun content = tree_.ContentOf(parent);
        tree_.Append(parent, content, node);
    }
}

}  // namespace HtmlEngine::Internal
