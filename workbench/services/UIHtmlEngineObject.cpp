#include "services/UIHtmlEngineObject.h"

#include "service-common/UnicodeText.h"

#include <string_view>
#include <utility>

namespace Workbench {

namespace {

using HtmlEngine::Document;
using HtmlEngine::ElementHandle;

HtmlEngine::InsertPosition ToInsertPosition(HtmlPosition position)
{
    switch (position) {
    case HtmlPosition::kReplaceContent:
        return HtmlEngine::InsertPosition::ReplaceContent;
    case HtmlPosition::kInsertFirst:
        return HtmlEngine::InsertPosition::InsertFirst;
    case HtmlPosition::kAppendLast:
        return HtmlEngine::InsertPosition::AppendLast;
    case HtmlPosition::kReplaceWhole:
        return HtmlEngine::InsertPosition::ReplaceElement;
    case HtmlPosition::kInsertBefore:
        return HtmlEngine::InsertPosition::InsertBefore;
    case HtmlPosition::kInsertAfter:
        return HtmlEngine::InsertPosition::InsertAfter;
    }
    FailCall(kResultOutOfRange, "there is no position of markup with number " +
                                    std::to_string(static_cast<std::uint32_t>(position)));
}

}  // namespace

void CheckEngineResult(HtmlEngine::Result result, const char* selector)
{
    switch (result) {
    case HtmlEngine::Result::Success:
        return;
    case HtmlEngine::Result::UnknownElement:
        FailCall(kResultNotFound, "the handle is no element, or no longer one");
    case HtmlEngine::Result::NoPlace:
        FailCall(kResultUnexpected,
                 "the element has no place in a tree that this could be done at");
    case HtmlEngine::Result::NoContent:
        FailCall(kResultUnexpected, "the element cannot have content");
    case HtmlEngine::Result::BadName:
        FailCall(kResultUnexpected, "the name or value cannot be written as an attribute or style");
    case HtmlEngine::Result::MalformedSelector:
        FailCall(kResultUnexpected, "selector \"" + std::string(selector) +
                                        "\": " + Document::DescribeSelectorProblem(selector));
    case HtmlEngine::Result::NotHeld:
        FailCall(kResultUnexpected, "the element has no use that could be ended");
    case HtmlEngine::Result::HandlerRefused:
        FailCall(kResultUnexpected, "the handler is refused");
    }
    FailCall(kResultUnexpected, "the engine failed");
}

UIHtmlEngineObject::UIHtmlEngineObject(std::shared_ptr<HtmlPanel> panel) : panel_(std::move(panel))
{
    Offer<UIHtmlEngine::UseElement, &UIHtmlEngineObject::UseElement>();
    Offer<UIHtmlEngine::UnuseElement, &UIHtmlEngineObject::UnuseElement>();
    Offer<UIHtmlEngine::GetParent, &UIHtmlEngineObject::GetParent>();
    Offer<UIHtmlEngine::GetIndex, &UIHtmlEngineObject::GetIndex>();
    Offer<UIHtmlEngine::GetChildCount, &UIHtmlEngineObject::GetChildCount>();
    Offer<UIHtmlEngine::GetNthChild, &UIHtmlEngineObject::GetNthChild>();
    Offer<UIHtmlEngine::SetHtml, &UIHtmlEngineObject::SetHtml>();
    Offer<UIHtmlEngine::SetText, &UIHtmlEngineObject::SetText>();
    Offer<UIHtmlEngine::SetStyleAttribute, &UIHtmlEngineObject::SetStyleAttribute>();
    Offer<UIHtmlEngine::GetState, &UIHtmlEngineObject::GetState>();
    Offer<UIHtmlEngine::SetState, &UIHtmlEngineObject::SetState>();
    Offer<UIHtmlEngine::SelectFirst, &UIHtmlEngineObject::SelectFirst>();
    Offer<UIHtmlEngine::SelectEnclosing, &UIHtmlEngineObject::SelectEnclosing>();
    Offer<UIHtmlEngine::TestSelector, &UIHtmlEngineObject::TestSelector>();
    Offer<UIHtmlEngine::GetAttribute, &UIHtmlEngineObject::GetAttribute>();
    Offer<UIHtmlEngine::UpdateElement, &UIHtmlEngineObject::UpdateElement>();
    Offer<UIHtmlEngine::ScrollIntoView, &UIHtmlEngineObject::ScrollIntoView>();
    Offer<UIHtmlEngine::AttachHandler, &UIHtmlEngineObject::AttachHandler>();
    Offer<UIHtmlEngine::DeleteElement, &UIHtmlEngineObject::DeleteElement>();
}

Document& UIHtmlEngineObject::PanelDocument() const
{
    Document* const document = panel_->Document();
    if (document == nullptr) {
        FailCall(kResultNotInitialized, "the panel's document is closed");
    }
    return *document;
}

Document& UIHtmlEngineObject::PanelDocumentWith(HtmlElementHandle element) const
{
    Document& document = PanelDocument();
    if (!document.IsKnown(ElementOf(element))) {
        CheckEngineResult(HtmlEngine::Result::UnknownElement);
    }
    return document;
}

ResultCode UIHtmlEngineObject::UseElement(HtmlElementHandle element)
{
    CheckEngineResult(PanelDocument().Use(ElementOf(element)));
    return kResultOk;
}

ResultCode UIHtmlEngineObject::UnuseElement(HtmlElementHandle element)
{
    // Uses that outlive the page end with it.
    if (panel_->Document() != nullptr) {
        CheckEngineResult(PanelDocument().Unuse(ElementOf(element)));
    }
    return kResultOk;
}

ResultCode UIHtmlEngineObject::GetParent(HtmlElementHandle element, HtmlElementHandle* parent) const
{
    if (parent == nullptr) {
        return kResultNullArgument;
    }
    *parent = nullptr;
    *parent = HandleOf(PanelDocumentWith(element).Parent(ElementOf(element)));
    return kResultOk;
}

ResultCode UIHtmlEngineObject::GetIndex(HtmlElementHandle element, std::uint32_t* index) const
{
    if (index == nullptr) {
        return kResultNullArgument;
    }
    *index = 0;
    *index =
        static_cast<std::uint32_t>(PanelDocumentWith(element).IndexInParent(ElementOf(element)));
    return kResultOk;
}

ResultCode UIHtmlEngineObject::GetChildCount(HtmlElementHandle element, std::uint32_t* count) const
{
    if (count == nullptr) {
        return kResultNullArgument;
    }
    *count = 0;
    *count = static_cast<std::uint32_t>(PanelDocumentWith(element).ChildCount(ElementOf(element)));
    return kResultOk;
}

ResultCode UIHtmlEngineObject::GetNthChild(HtmlElementHandle element, std::uint32_t index,
                                           HtmlElementHandle* child) const
{
    if (child == nullptr) {
        return kResultNullArgument;
    }
    *child = nullptr;
    const ElementHandle found = PanelDocumentWith(element).Child(ElementOf(element), index);
    *child = HandleOf(found);
    return found == HtmlEngine::kNoElement ? kResultOutOfRange : kResultOk;
}

ResultCode UIHtmlEngineObject::SetHtml(HtmlElementHandle element, const std::uint8_t* html,
                                       std::uint32_t length, HtmlPosition position)
{
    if (html == nullptr && length != 0) {
        return kResultNullArgument;
    }
    const std::string_view markup(reinterpret_cast<const char*>(html), length);
    CheckEngineResult(
        PanelDocumentWith(element).SetHtml(ElementOf(element), markup, ToInsertPosition(position)));
    return kResultOk;
}

ResultCode UIHtmlEngineObject::SetText(HtmlElementHandle element, const char16_t* text,
                                       std::uint32_t length)
{
    if (text == nullptr && length != 0) {
        return kResultNullArgument;
    }
    CheckEngineResult(PanelDocument().SetText(
        ElementOf(element), UnicodeText::ToUtf8(std::u16string_view(text, length))));
    return kResultOk;
}

ResultCode UIHtmlEngineObject::SetStyleAttribute(HtmlElementHandle element, const char* name,
                                                 const char16_t* value)
{
    if (name == nullptr || value == nullptr) {
        return kResultNullArgument;
    }
    CheckEngineResult(
        PanelDocument().SetStyle(ElementOf(element), name, UnicodeText::ToUtf8(value)));
    return kResultOk;
}

ResultCode UIHtmlEngineObject::GetState(HtmlElementHandle element, std::uint32_t* state) const
{
    if (state == nullptr) {
        return kResultNullArgument;
    }
    *state = 0;
    *state = PanelDocumentWith(element).State(ElementOf(element));
    return kResultOk;
}

ResultCode UIHtmlEngineObject::SetState(HtmlElementHandle element, std::uint32_t bitsToSet,
                                        std::uint32_t bitsToClear, std::uint32_t)
{
    CheckEngineResult(PanelDocument().SetState(ElementOf(element), bitsToSet, bitsToClear));
    return kResultOk;
}

ResultCode UIHtmlEngineObject::SelectFirst(HtmlElementHandle root, const char* selector,
                                           HtmlElementHandle* element) const
{
    if (element == nullptr) {
        return kResultNullArgument;
    }
    *element = nullptr;
    if (selector == nullptr) {
        return kResultNullArgument;
    }
    ElementHandle match = HtmlEngine::kNoElement;
    CheckEngineResult(PanelDocument().SelectFirst(ElementOf(root), selector, match), selector);
    *element = HandleOf(match);
    return kResultOk;
}

ResultCode UIHtmlEngineObject::SelectEnclosing(HtmlElementHandle element, const char* selector,
                                               HtmlElementHandle* enclosing) const
{
    if (enclosing == nullptr) {
        return kResultNullArgument;
    }
    *enclosing = nullptr;
    if (selector == nullptr) {
        return kResultNullArgument;
    }
    ElementHandle match = HtmlEngine::kNoElement;
    CheckEngineResult(PanelDocument().Closest(ElementOf(element), selector, match), selector);
    *enclosing = HandleOf(match);
    return kResultOk;
}

ResultCode UIHtmlEngineObject::TestSelector(HtmlElementHandle element, const char* selector,
                                            bool* matches) const
{
    if (matches == nullptr) {
        return kResultNullArgument;
    }
    *matches = false;
    if (selector == nullptr) {
        return kResultNullArgument;
    }
    CheckEngineResult(PanelDocument().Matches(ElementOf(element), selector, *matches), selector);
    return kResultOk;
}

ResultCode UIHtmlEngineObject::GetAttribute(HtmlElementHandle element, const char* name,
                                            const char16_t** value, std::uint32_t* length)
{
    if (value == nullptr || length == nullptr) {
        return kResultNullArgument;
    }
    *value = nullptr;
    *length = 0;
    if (name == nullptr) {
        return kResultNullArgument;
    }
    if (const auto found = PanelDocumentWith(element).Attribute(ElementOf(element), name)) {
        handedOut_ = UnicodeText::ToUtf16(*found);
        *value = handedOut_.c_str();
        *length = static_cast<std::uint32_t>(handedOut_.size());
    }
    return kResultOk;
}

// The engine lays nothing out, so there is nothing to bring up to date here.
ResultCode UIHtmlEngineObject::UpdateElement(HtmlElementHandle element, std::uint32_t) const
{
    PanelDocumentWith(element);
    return kResultOk;
}

ResultCode UIHtmlEngineObject::ScrollIntoView(HtmlElementHandle element, std::uint32_t) const
{
    PanelDocumentWith(element);
    panel_->ScrollIntoView(ElementOf(element));
    return kResultOk;
}

ResultCode UIHtmlEngineObject::AttachHandler(HtmlElementHandle element, UIHandler* handler)
{
    if (handler == nullptr) {
        return kResultNullArgument;
    }
    PanelDocument();
    return panel_->AttachHandler(ElementOf(element), handler);
}

ResultCode UIHtmlEngineObject::DeleteElement(HtmlElementHandle element)
{
    CheckEngineResult(PanelDocument().Delete(ElementOf(element)));
    return kResultOk;
}

}  // namespace Workbench
