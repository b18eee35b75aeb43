// Clicks and keys of pages: where they go in the panel, and what of them may act on a comment.
#include "web/Desk.h"

#include "driver/PanelReader.h"
#include "services/KeyNames.h"
#include "ui-engine/HtmlElementTypes.h"
#include "web/CommandRefused.h"

namespace Workbench {

namespace {

using HtmlEngine::ElementHandle;
using HtmlEngine::kNoElement;

}  // namespace

PanelInput Desk::ReadInput(SocketNumber socket, const PageMessage& message, bool isKey) const
{
    PanelInput input;
    input.socket = socket;
    input.id = message.OptionalNumber("id");
    input.item = message.OptionalNumber("item");
    input.container = FindVisibleContainer(*host_.Panel().Page());
    if (!isKey) {
        input.element = message.Number("element");
        return input;
    }
    const std::string name = message.Text("key");
    const auto key = KeyNamed(name);
    if (!key) {
        throw MessageError("there is no key \"" + name + "\"");
    }
    input.element = message.OptionalNumber("element");
    input.key = *key;
    input.modifiers =
        static_cast<std::uint32_t>(message.OptionalNumber("modifiers").value_or(0) & 0xFFFF);
    return input;
}

// Behind input that waits, everything waits that is for the same document.
void Desk::Take(const PanelInput& input)
{
    OpenDocument* const document = ActiveDocument();
    if (document != nullptr &&
        (!document->waiting.empty() || (document->fileJobs != 0 && Deletes(input)))) {
        document->waiting.emplace_back(input);
    } else {
        Act(input);
    }
}

void Desk::Act(const PanelInput& input)
{
    try {
        const ElementHandle target = TargetOf(input);
        OpenDocument* const document = DocumentAround(target);
        if (document != nullptr) {
            CheckInput(*document, input);
        }
        if (input.key) {
            host_.Panel().PressKey(target, *input.key, input.modifiers);
        } else {
            host_.Panel().Click(target);
        }
        // What comes next may act on the comment that is current now.
        if (document != nullptr) {
            document->current.Update(document->view->View(), *host_.Panel().Page());
        }
        if (input.id) {
            Reply({input.socket, *input.id, nullptr});
        }
    } catch (const CommandRefused& refused) {
        RefuseInput(input, refused.what(), refused.Reason());
    }
}

void Desk::RefuseInput(const PanelInput& input, const std::string& error, const std::string& reason)
{
    if (input.id) {
        Refuse({input.socket, *input.id, nullptr}, error, reason);
    } else {
        Update();
        Send(input.socket, DescribeNotice(error, reason));
    }
}

// What the panel makes the document's delete command of.
bool Desk::Deletes(const PanelInput& input) const
{
    if (input.key) {
        return *input.key == kKeyDelete;
    }
    ElementHandle button = kNoElement;
    host_.Panel().Page()->Closest(panel_.ElementWith(*input.element), "#delete", button);
    return button != kNoElement;
}

// A key whose element is gone meanwhile, or that has none, is for the item that is current when its
// turn comes.
ElementHandle Desk::TargetOf(const PanelInput& input) const
{
    ElementHandle target = input.element ? panel_.ElementWith(*input.element) : kNoElement;
    if (target == kNoElement && !input.key) {
        throw CommandRefused("what was clicked is no longer there", "gone");
    }
    const HtmlEngine::Document& page = *host_.Panel().Page();
    if (target == kNoElement) {
        page.SelectFirst(input.container, "li[annot-name]:current", target);
    }
    if (target == kNoElement) {
        page.SelectFirst(input.container, "div.results-container", target);
    }
    return target;
}

OpenDocument* Desk::DocumentAround(ElementHandle element) const
{
    const HtmlEngine::Document& page = *host_.Panel().Page();
    ElementHandle container = kNoElement;
    page.Closest(element, ".panel-content[doc-view-addr]", container);
    const std::string key = page.Attribute(container, "doc-view-addr").value_or("");
    for (const auto& document : documents_) {
        if (ContainerKey(document->view->View().AsInterface()) == key) {
            return document.get();
        }
    }
    return nullptr;
}

// Without a comment to act on the panel would fail, and it deletes without a word or not at all.
void Desk::CheckInput(const OpenDocument& document, const PanelInput& input) const
{
    const bool deletes = Deletes(input);
    if (!deletes && input.key != kKeyEnter) {
        return;
    }
    if (deletes && document.content->ReadOnly()) {
        throw CommandRefused(document.name + " is read-only", "read-only");
    }
    const CurrentComment::Place place = CurrentPlace(document, input.item);
    if (deletes) {
        CheckChangeable(document, place.page, place.index);
    }
    // Of a page that is folded no item is seen.
    if (deletes && input.key && !host_.Panel().IsShown(document.current.Item())) {
        throw CommandRefused("the current comment of " + document.name + " is folded away",
                             "folded");
    }
}

CurrentComment::Place Desk::CurrentPlace(const OpenDocument& document,
                                         std::optional<std::uint64_t> item) const
{
    if (!document.current.ListStands()) {
        throw CommandRefused("the comments of " + document.name + " are still being listed",
                             "listing");
    }
    const auto place = document.current.PlaceIn(*document.content);
    if (item && *item != panel_.NumberOf(document.current.Item())) {
        throw CommandRefused("another comment of " + document.name + " is current meanwhile",
                             "other-comment");
    }
    if (!place) {
        throw CommandRefused("no comment of " + document.name + " is current", "no-comment");
    }
    return *place;
}

}  // namespace Workbench
